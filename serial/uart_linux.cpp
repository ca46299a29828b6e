#include "serial/uart_linux.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace quarn {
namespace {

constexpr std::chrono::milliseconds kDrainPoll{2};

}  // namespace

ExclusiveMark::ExclusiveMark(ExclusiveMark&& other) noexcept : m_line(std::exchange(other.m_line, -1)) {}

ExclusiveMark& ExclusiveMark::operator=(ExclusiveMark&& other) noexcept {
  std::swap(m_line, other.m_line);
  return *this;
}

bool ExclusiveMark::Set(int line) {
  int marked = 0;
  if (ioctl(line, TIOCGEXCL, &marked) == 0 && marked != 0) return false;
  if (ioctl(line, TIOCEXCL) != 0) return false;
  m_line = line;
  return true;
}

void ExclusiveMark::Clear() {
  if (m_line >= 0) ioctl(std::exchange(m_line, -1), TIOCNXCL);
}

void LowLatency::Set(int line) {
  serial_struct settings{};
  if (ioctl(line, TIOCGSERIAL, &settings) != 0 || (settings.flags & int{ASYNC_LOW_LATENCY}) != 0) return;
  settings.flags |= int{ASYNC_LOW_LATENCY};
  m_changed = ioctl(line, TIOCSSERIAL, &settings) == 0;
}

void LowLatency::PutBack(int line) {
  serial_struct settings{};
  if (!std::exchange(m_changed, false) || ioctl(line, TIOCGSERIAL, &settings) != 0) return;
  settings.flags &= ~int{ASYNC_LOW_LATENCY};
  ioctl(line, TIOCSSERIAL, &settings);
}

std::size_t QueuedOutput(int line) {
  int queued = 0;
  if (ioctl(line, TIOCOUTQ, &queued) != 0) return 0;
  return static_cast<std::size_t>(std::max(queued, 0));
}

bool DrainOutput(int line, LineClock::time_point deadline) {
  while (QueuedOutput(line) > 0) {
    if (LineClock::now() >= deadline) {
      ioctl(line, TCFLSH, TCOFLUSH);
      return false;
    }
    std::this_thread::sleep_for(kDrainPoll);
  }
  return true;
}

}  // namespace quarn
