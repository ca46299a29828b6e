#pragma once

#include "serial/serial_line.h"

namespace quarn {

/// The kind of a terminal device: some steps that a UART needs are harmful on a pseudo-terminal.
enum class TerminalKind { Uart, PseudoTerminal };

/// OpenTerminalDevice for a device of a known kind.
OpenResult OpenTerminalDeviceAs(const QString& node, TerminalKind kind);

}  // namespace quarn
