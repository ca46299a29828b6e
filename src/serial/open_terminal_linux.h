#pragma once

#include "serial/serial_line.h"

namespace quarn {

/// What stands behind a terminal device: some of what a UART needs does harm on a pseudo-terminal.
enum class TerminalKind { Uart, PseudoTerminal };

/// OpenTerminalDevice for a device that is known to be of a kind.
OpenResult OpenTerminalDeviceAs(const QString& node, TerminalKind kind);

}  // namespace quarn
