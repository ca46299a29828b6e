#pragma once

#include <asm/termbits.h>
#include <sys/types.h>

#include <QString>

#include "serial/file_descriptor.h"
#include "serial/open_terminal_linux.h"
#include "serial/serial_line.h"
#include "serial/uart_linux.h"

namespace quarn {

/// What opening took, and Close releases.
struct LineHold {
  FileDescriptor line;
  FileDescriptor wake;
  dev_t device = 0;  ///< its number
  termios2 former{};
  TerminalKind kind = TerminalKind::Uart;
  // After the descriptor, so that they are released before it is closed.
  ExclusiveMark mark;
  LowLatency latency;
};

/// The failure of a line that was open.
LineFailure FailureOfLine(const QString& node, int error);

/// Bytes that are not sent in time are dropped: the driver would wait for them at the close. `sentBy`: when
/// the chip has sent all bytes that were written.
void LetBytesGoOut(int line, const LineTimeouts& timeouts, LineClock::time_point sentBy);

/// Restores what opening changed. All of these calls fail if the device is gone; then there is nothing to
/// restore.
///
/// A line that echoes sends received bytes back to the instrument. So the echo flag is restored last, by a
/// call of its own, right before the descriptor is closed.
LineResult GiveBackAndClose(LineHold& hold, const QString& node);

}  // namespace quarn
