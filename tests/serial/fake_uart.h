#pragma once

#include <asm/termbits.h>

#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <vector>

namespace quarn {

/// Simulates the driver of a UART. While it exists, it answers the control calls that only a UART answers;
/// the bytes go through a pseudo-terminal. One at a time; any thread may make calls.
class FakeUart {
 public:
  FakeUart();
  ~FakeUart();
  FakeUart(const FakeUart&) = delete;
  FakeUart& operator=(const FakeUart&) = delete;

  // How the driver behaves. Set before the call.
  std::function<void(termios2&)> take = [](termios2&) {};  ///< changes each state that is set
  std::function<int()> queued = [] { return 0; };          ///< bytes that it has not sent yet
  bool marked = false;                                     ///< the exclusive mark
  bool lowLatency = false;
  bool knowsLatency = true;
  bool takesLatency = true;
  /// The error with which a call on this descriptor ends before the driver sees it; 0 for none.
  std::function<int(int)> failing = [](int) { return 0; };
  int failingSetState = 0;    ///< the error of every setting of the state; 0 for none
  int failingMark = 0;        ///< and of setting the exclusive mark
  int failingModemLines = 0;  ///< and of each change of DTR or RTS
  bool noEventDescriptors = false;
  /// Flow control holds the bytes in the chip: closing waits for them like a driver, for half a minute or
  /// until a signal comes.
  bool holdsClose = false;
  /// If it is valid, closing ends when this is ready, whatever signals come: an adapter does not answer.
  std::shared_future<void> stuckUntil;

  /// The state of the line before it is opened.
  void Preset(const termios2& state);
  [[nodiscard]] termios2 State() const;
  /// The calls that changed something, in order.
  [[nodiscard]] std::vector<std::string> Calls() const;
  /// The number of calls on the open line while it echoes, including those that change nothing.
  [[nodiscard]] int CallsWhileEchoing() const;
  [[nodiscard]] bool WasCalled(const std::string& call) const;

  /// The descriptor is about to be closed.
  void Closing(int descriptor);
  /// Answers a control call: -1 with errno for a failure, `passOn` for a call that it does not simulate.
  int Control(int descriptor, unsigned long request, void* argument, bool& passOn);

 private:
  int ModemLine(const char* level, int line);
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
