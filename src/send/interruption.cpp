#include "send/interruption.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace quarn::send {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set it");

void Notice(int signal) {
  interrupted = true;
  (void)std::signal(signal, SIG_DFL);
}

/// nohup, and a shell that starts something in the background, have signals ignored.
void NoticeUnlessIgnored(int signal) {
  if (std::signal(signal, Notice) == SIG_IGN) (void)std::signal(signal, SIG_IGN);
}

}  // namespace

void NoticeInterruption() {
  NoticeUnlessIgnored(SIGINT);
  NoticeUnlessIgnored(SIGTERM);
#ifdef SIGHUP
  NoticeUnlessIgnored(SIGHUP);
#endif
}

bool IsInterrupted() { return interrupted; }

bool SleepUntil(std::chrono::steady_clock::time_point end) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLook{50};
  for (auto now = Clock::now(); now < end && !interrupted; now = Clock::now()) {
    std::this_thread::sleep_until(std::min(end, now + kLook));
  }
  return !interrupted;
}

}  // namespace quarn::send
