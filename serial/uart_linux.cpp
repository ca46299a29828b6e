#include "serial/uart_linux.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <linux/serial.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include "serial/uninterrupted_posix.h"

namespace quarn {
namespace {

constexpr std::chrono::milliseconds kDrainPoll{2};

}  // namespace

ExclusiveMark::ExclusiveMark(ExclusiveMark&& other) noexcept : m_line(std::exchange(other.m_line, -1)) {}

int ExclusiveMark::Set(int line) {
  int marked = 0;
  if (ControlLine(line, TIOCGEXCL, &marked) == 0 && marked != 0) return EBUSY;
  if (ControlLine(line, TIOCEXCL, nullptr) != 0) return errno;
  m_line = line;
  return 0;
}

void ExclusiveMark::Clear() {
  if (m_line >= 0) ControlLine(std::exchange(m_line, -1), TIOCNXCL, nullptr);
}

void LowLatency::Set(int line) {
  serial_struct settings{};
  if (ControlLine(line, TIOCGSERIAL, &settings) != 0 || (settings.flags & int{ASYNC_LOW_LATENCY}) != 0)
    return;
  settings.flags |= int{ASYNC_LOW_LATENCY};
  m_changed = ControlLine(line, TIOCSSERIAL, &settings) == 0;
}

void LowLatency::PutBack(int line) {
  serial_struct settings{};
  if (!std::exchange(m_changed, false) || ControlLine(line, TIOCGSERIAL, &settings) != 0) return;
  settings.flags &= ~int{ASYNC_LOW_LATENCY};
  ControlLine(line, TIOCSSERIAL, &settings);
}

std::size_t QueuedOutput(int line) {
  int queued = 0;
  if (ControlLine(line, TIOCOUTQ, &queued) != 0) return 0;
  return static_cast<std::size_t>(std::max(queued, 0));
}

bool DrainOutput(int line, LineClock::time_point deadline) {
  while (QueuedOutput(line) > 0) {
    if (LineClock::now() >= deadline) {
      FlushLine(line, TCOFLUSH);
      return false;
    }
    std::this_thread::sleep_for(kDrainPoll);
  }
  return true;
}

}  // namespace quarn
