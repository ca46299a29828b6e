#pragma once

#include <asm/termbits.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace quarn {

/// Plays the driver of a UART: while one of these lives, the control calls that only a UART answers go to it
/// instead of to the pseudo-terminal that carries the bytes. One at a time; any thread may make calls.
class FakeUart {
 public:
  FakeUart();
  ~FakeUart();
  FakeUart(const FakeUart&) = delete;
  FakeUart& operator=(const FakeUart&) = delete;

  // What the driver does. Set before the call that it is about.
  std::function<void(termios2&)> take = [](termios2&) {};  ///< what becomes of a state that it is given
  std::function<int()> queued = [] { return 0; };          ///< bytes that it has not sent yet
  bool marked = false;                                     ///< the exclusive mark
  bool lowLatency = false;
  bool knowsLatency = true;
  bool takesLatency = true;
  /// The error with which a call on this descriptor ends before the driver sees it; 0 for none.
  std::function<int(int)> failing = [](int) { return 0; };
  int failingSetState = 0;  ///< the error of every setting of the state; 0 for none
  int failingMark = 0;      ///< and of setting the exclusive mark
  bool noEventDescriptors = false;
  /// Flow control holds the bytes in the chip: closing waits for them as long as drivers do, half a minute,
  /// or until a signal comes.
  bool holdsClose = false;

  /// The state in which the line is found.
  void Preset(const termios2& state);
  [[nodiscard]] termios2 State() const;
  /// The calls so far that change something, in order.
  [[nodiscard]] std::vector<std::string> Calls() const;
  /// The calls that have met a line that is open and echoes; also those that change nothing.
  [[nodiscard]] int CallsWhileEchoing() const;
  [[nodiscard]] bool WasCalled(const std::string& call) const;

  /// The descriptor is about to be closed.
  void Closing(int descriptor);
  /// Answers a control call; -1 with errno set for a failure, `passOn` for one that it has no part in.
  int Control(int descriptor, unsigned long request, void* argument, bool& passOn);

 private:
  int Serial(unsigned long request, void* argument);
  int SetState(const char* call, const termios2& wanted);
  [[nodiscard]] bool Echoes() const { return (m_state.c_lflag & (ECHO | ECHONL)) != 0; }

  mutable std::mutex m_mutex;
  termios2 m_state{};
  int m_line = -1;  ///< the descriptor by which its state was set
  int m_callsWhileEchoing = 0;
  std::vector<std::string> m_calls;
};

/// Smallest buffer that the group data base accepts while this is above 0.
extern std::size_t g_smallestGroupBuffer;

}  // namespace quarn
