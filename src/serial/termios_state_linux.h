#pragma once

#include <asm/termbits.h>

#include <optional>

#include "serial/serial_line.h"

namespace quarn {

// Line parameters in, termios2 out, and back. Pure: no device is touched. Must not be included together
// with <termios.h>, which defines the same names differently.

/// Binary line: no echo, no signals, no mapping of input or output, no XON/XOFF, receiver on, modem
/// lines ignored. Hardware flow control stays as the driver has it.
void MakeRaw(termios2& state);

/// Takes all echo out of a state; true when there was any.
bool MakeQuiet(termios2& state);

/// Puts the four parameters into `state`. False, and `state` untouched, for a combination that no UART
/// has: 1.5 stop bits with other than 5 data bits, 2 stop bits with 5, data bits outside 5 to 8.
bool ApplyLineState(const LineState& wanted, termios2& state);

/// The four parameters that `state` stands for.
LineState LineStateOf(const termios2& state);

/// Whether the driver took what was asked for. A rate counts as taken when it is within 2 per cent, the
/// distance at which the kernel itself still reports the rate that was asked for: a UART's divisor rarely
/// hits a rate exactly. `pseudoTerminal`: such a line has no data bits and no parity, and the kernel
/// says so by reporting 8 and none whatever was asked.
bool WasTaken(const LineState& wanted, const LineState& reported, bool pseudoTerminal);

}  // namespace quarn
