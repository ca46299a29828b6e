#include "serial/line_hold_linux.h"

#include <asm/ioctls.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "serial/line_failure_linux.h"
#include "serial/read_deadline.h"
#include "serial/retry_on_eintr_linux.h"
#include "serial/termios_state_linux.h"

namespace quarn {
namespace {

/// The longest time that closing waits for bytes to be sent, however slow the line is: a person waits.
constexpr std::chrono::milliseconds kLongestDrain{700};
/// The longest time that it lets the driver wait in one call.
constexpr std::chrono::milliseconds kLongestWaitInDriver{100};

}  // namespace

LineFailure FailureOfLine(const QString& node, int error) {
  LineFailure failure = FailureOf(node, error);
  // The device existed when it was opened. A driver whose adapter is gone also gives this error.
  if (failure.kind == LineError::NotFound) failure.kind = LineError::Disconnected;
  return failure;
}

void LetBytesGoOut(int line, const LineTimeouts& timeouts, LineClock::time_point sentBy) {
  const auto now = LineClock::now();
  const auto longest = now + kLongestDrain;
  const auto deadline = WriteDeadline(timeouts, QueuedOutput(line), now).value_or(longest);
  // The last bytes may still be in the chip's buffer. They must be sent at their own rate.
  if (DrainOutput(line, std::min(deadline, longest))) {
    std::this_thread::sleep_until(std::min(sentBy, longest));
  }
}

LineResult GiveBackAndClose(LineHold& hold, const QString& node) {
  const WaitLimit limit(kLongestWaitInDriver);
  const int line = hold.line.Get();
  hold.latency.PutBack(line);
  hold.mark.Clear();
  termios2 quiet = hold.former;
  if (hold.kind == TerminalKind::Uart && MakeQuiet(quiet)) {
    ControlLineBriefly(line, TCSETS2, &quiet);
    FlushLine(line, TCIFLUSH);
  }
  ControlLineBriefly(line, TCSETS2, &hold.former);
  return hold.line.Close() ? LineResult() : LineResult(FailureOfLine(node, errno));
}

}  // namespace quarn
