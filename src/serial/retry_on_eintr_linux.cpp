#include "serial/retry_on_eintr_linux.h"

#include <asm/ioctls.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <chrono>

namespace quarn {

int ControlLine(int line, unsigned long request, void* argument) {
  return RetryOnEintr([&] { return ioctl(line, request, argument); });
}

int ControlLineBriefly(int line, unsigned long request, void* argument) {
  constexpr int kBriefAttempts = 5;
  int result = ioctl(line, request, argument);
  for (int i = 1; i < kBriefAttempts && result == -1 && errno == EINTR; ++i) {
    result = ioctl(line, request, argument);
  }
  return result;
}

int FlushLine(int line, int queues) {
  return RetryOnEintr([&] { return ioctl(line, TCFLSH, queues); });
}

int PollLine(std::array<pollfd, 2>& polled, std::optional<LineClock::time_point> deadline) {
  for (;;) {
    const auto now = LineClock::now();
    timespec left{};
    if (deadline) {
      const auto wait = std::max(*deadline - now, LineClock::duration::zero());
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
      left.tv_sec = seconds.count();
      left.tv_nsec = std::chrono::nanoseconds(wait - seconds).count();
    }
    const int count = ppoll(polled.data(), polled.size(), deadline ? &left : nullptr, nullptr);
    if (count >= 0 || errno != EINTR) return count;
    // However many signals arrive, the deadline stays.
    if (deadline && now >= *deadline) return 0;
  }
}

}  // namespace quarn
