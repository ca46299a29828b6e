#include "serial/uart_linux.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <linux/serial.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include "serial/retry_on_eintr_linux.h"

namespace quarn {
namespace {

constexpr std::chrono::milliseconds kDrainPoll{2};
constexpr std::chrono::milliseconds kInterruptAgain{10};

timespec SpecOf(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  return {seconds.count(), std::chrono::nanoseconds(time - seconds).count()};
}

}  // namespace

ExclusiveMark::ExclusiveMark(ExclusiveMark&& other) noexcept : m_line(std::exchange(other.m_line, -1)) {}

bool ExclusiveMark::IsSet(int line) {
  int marked = 0;
  return ControlLine(line, TIOCGEXCL, &marked) == 0 && marked != 0;
}

int ExclusiveMark::Set(int line) {
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

WaitLimit::WaitLimit(std::chrono::milliseconds longest) {
  // A signal that nothing else uses. Its only effect is to arrive.
  static const int signal = [] {
    const int number = SIGRTMIN + 7;
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigemptyset(&action.sa_mask);
    return ::sigaction(number, &action, nullptr) == 0 ? number : 0;
  }();
  sigset_t let;
  sigemptyset(&let);
  sigaddset(&let, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &let, &m_formerMask);
  sigevent event{};
  event.sigev_notify = SIGEV_THREAD_ID;
  event.sigev_signo = signal;
  event._sigev_un._tid = ::gettid();
  m_runs = signal != 0 && ::timer_create(CLOCK_MONOTONIC, &event, &m_timer) == 0;
  if (!m_runs) return;
  itimerspec times{};
  times.it_value = SpecOf(longest);
  // Repeated, because a signal that arrives just before the wait does not end it.
  times.it_interval = SpecOf(kInterruptAgain);
  ::timer_settime(m_timer, 0, &times, nullptr);
}

WaitLimit::~WaitLimit() {
  if (m_runs) ::timer_delete(m_timer);
  ::pthread_sigmask(SIG_SETMASK, &m_formerMask, nullptr);
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
