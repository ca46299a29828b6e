#include "serial/fake_uart.h"

#include <asm/ioctls.h>
#include <grp.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>

// The program is linked with --wrap for these names, which fixes how the functions are called.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_ioctl(int descriptor, unsigned long request, ...);
int __real_close(int descriptor);
int __wrap_close(int descriptor);
int __real_eventfd(unsigned int value, int flags);
int __real_getgrgid_r(gid_t group, struct group* entry, char* buffer, std::size_t size,
                      struct group** result);
int __wrap_ioctl(int descriptor, unsigned long request, ...);
int __wrap_eventfd(unsigned int value, int flags);
int __wrap_getgrgid_r(gid_t group, struct group* entry, char* buffer, std::size_t size,
                      struct group** result);
}

namespace quarn {
namespace {

std::atomic<FakeUart*> g_uart = nullptr;

int Failure(int error) {
  errno = error;
  return -1;
}

}  // namespace

std::size_t g_smallestGroupBuffer = 0;

FakeUart::FakeUart() {
  m_state.c_cflag = B9600 | CS8 | CREAD;
  m_state.c_lflag = ICANON | ECHO;
  m_state.c_ispeed = 9600;
  m_state.c_ospeed = 9600;
  g_uart = this;
}

FakeUart::~FakeUart() { g_uart = nullptr; }

void FakeUart::Preset(const termios2& state) {
  const std::lock_guard guard(m_mutex);
  m_state = state;
}

termios2 FakeUart::State() const {
  const std::lock_guard guard(m_mutex);
  return m_state;
}

std::vector<std::string> FakeUart::Calls() const {
  const std::lock_guard guard(m_mutex);
  return m_calls;
}

int FakeUart::CallsWhileEchoing() const {
  const std::lock_guard guard(m_mutex);
  return m_callsWhileEchoing;
}

bool FakeUart::WasCalled(const std::string& call) const {
  const auto calls = Calls();
  return std::find(calls.begin(), calls.end(), call) != calls.end();
}

int FakeUart::SetState(const char* call, const termios2& wanted) {
  m_calls.emplace_back(call);
  if (failingSetState != 0) return Failure(failingSetState);
  m_state = wanted;
  take(m_state);
  return 0;
}

int FakeUart::ModemLine(const char* level, int line) {
  if (failingModemLines != 0) return Failure(failingModemLines);
  m_calls.push_back((line == TIOCM_DTR   ? "DTR "
                     : line == TIOCM_RTS ? "RTS "
                                         : "other lines ") +
                    std::string(level));
  return 0;
}

int FakeUart::Serial(unsigned long request, void* argument) {
  if (!knowsLatency) return Failure(ENOTTY);
  auto& settings = *static_cast<serial_struct*>(argument);
  if (request == TIOCGSERIAL) {
    settings = {};
    // Another flag, which must be kept.
    settings.flags = int{ASYNC_SKIP_TEST} | (lowLatency ? int{ASYNC_LOW_LATENCY} : 0);
    return 0;
  }
  const bool wanted = (settings.flags & int{ASYNC_LOW_LATENCY}) != 0;
  const bool kept = (settings.flags & int{ASYNC_SKIP_TEST}) != 0;
  m_calls.push_back(std::string(wanted ? "latency low" : "latency normal") +
                    (kept ? "" : " and other flags lost"));
  if (!takesLatency) return Failure(EPERM);
  lowLatency = wanted;
  return 0;
}

int FakeUart::Control(int descriptor, unsigned long request, void* argument, bool& passOn) {
  if (const int error = failing(descriptor)) return Failure(error);
  const std::lock_guard guard(m_mutex);
  if (Echoes()) ++m_callsWhileEchoing;
  if (request == TCSETS2) m_line = descriptor;
  switch (request) {
    case TCGETS2:
      *static_cast<termios2*>(argument) = m_state;
      return 0;
    case TCSETS2:
      return SetState("set state", *static_cast<termios2*>(argument));
    case TCSETSW2:
      return SetState("drain and set state", *static_cast<termios2*>(argument));
    case TIOCGEXCL:
      *static_cast<int*>(argument) = marked ? 1 : 0;
      return 0;
    case TIOCEXCL:
    case TIOCNXCL:
      if (request == TIOCEXCL && failingMark != 0) return Failure(failingMark);
      marked = request == TIOCEXCL;
      m_calls.emplace_back(marked ? "mark" : "unmark");
      return 0;
    case TIOCGSERIAL:
    case TIOCSSERIAL:
      return Serial(request, argument);
    case TIOCMBIS:
    case TIOCMBIC:
      return ModemLine(request == TIOCMBIS ? "up" : "down", *static_cast<int*>(argument));
    case TIOCOUTQ:
      *static_cast<int*>(argument) = queued();
      return 0;
    case TCFLSH:
      // The argument of this one is a number.
      m_calls.emplace_back(argument == reinterpret_cast<void*>(TCOFLUSH)   ? "flush output"
                           : argument == reinterpret_cast<void*>(TCIFLUSH) ? "flush input"
                                                                           : "flush");
      return 0;
    default:
      passOn = true;
      return 0;
  }
}

void FakeUart::Closing(int descriptor) {
  constexpr timespec kDriversPatience{30, 0};
  {
    const std::lock_guard guard(m_mutex);
    if (descriptor != m_line) return;
    m_line = -1;
    m_calls.emplace_back("close");
  }
  if (holdsClose && ::nanosleep(&kDriversPatience, nullptr) != 0) {
    const std::lock_guard guard(m_mutex);
    m_calls.emplace_back("interrupted");
  }
  if (!stuckUntil.valid()) return;
  stuckUntil.wait();
  // The last look at this object: the test may end now.
  const std::lock_guard guard(m_mutex);
  m_calls.emplace_back("closed");
}

}  // namespace quarn

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  quarn::FakeUart* uart = quarn::g_uart;
  bool passOn = uart == nullptr || descriptor < 0;
  const int result = passOn ? 0 : uart->Control(descriptor, request, argument, passOn);
  return passOn ? __real_ioctl(descriptor, request, argument) : result;
}

int __wrap_close(int descriptor) {
  if (quarn::FakeUart* uart = quarn::g_uart) uart->Closing(descriptor);
  return __real_close(descriptor);
}

int __wrap_eventfd(unsigned int value, int flags) {
  const quarn::FakeUart* uart = quarn::g_uart;
  return uart != nullptr && uart->noEventDescriptors ? quarn::Failure(EMFILE) : __real_eventfd(value, flags);
}

int __wrap_getgrgid_r(gid_t group, struct group* entry, char* buffer, std::size_t size,
                      struct group** result) {
  if (size < quarn::g_smallestGroupBuffer) {
    *result = nullptr;
    return ERANGE;
  }
  return __real_getgrgid_r(group, entry, buffer, size, result);
}
// NOLINTEND(bugprone-reserved-identifier)
