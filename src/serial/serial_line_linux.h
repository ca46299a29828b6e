#pragma once

#include <QString>
#include <memory>

#include "serial/line_hold_linux.h"
#include "serial/serial_line.h"

namespace quarn {

/// The line of a terminal device that has been opened and is raw. `node`: its name, for messages and to see
/// whether the device is still there.
std::shared_ptr<SerialLine> LineOf(const QString& node, LineHold hold);

}  // namespace quarn
