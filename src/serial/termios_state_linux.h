#pragma once

#include <asm/termbits.h>

#include <optional>

#include "serial/serial_line.h"

namespace quarn {

// Converts line parameters to termios2 and back. Pure: uses no device. Must not be included together with
// <termios.h>, which defines the same names differently.

/// Binary line: no echo, no signals, no mapping of input or output, no XON/XOFF, receiver on, modem lines
/// ignored. Hardware flow control is not changed.
void MakeRaw(termios2& state);

/// Removes all echo flags from a state; true if there were any.
bool MakeQuiet(termios2& state);

/// Sets the four parameters in `state`. Returns false without change for a combination that no UART supports:
/// 1.5 stop bits with other than 5 data bits, 2 stop bits with 5, data bits outside 5 to 8.
bool ApplyLineState(const LineState& wanted, termios2& state);

/// The four parameters in `state`.
LineState LineStateOf(const termios2& state);

/// Whether the driver accepted the requested state. A rate is accepted within 2 per cent, because a UART's
/// divisor rarely hits a rate exactly; within this distance the kernel itself still reports the requested
/// rate. `pseudoTerminal`: such a line has no data bits and no parity, and the kernel always reports 8 and
/// none.
bool WasTaken(const LineState& wanted, const LineState& reported, bool pseudoTerminal);

}  // namespace quarn
