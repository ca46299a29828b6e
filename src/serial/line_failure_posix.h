#pragma once

#include "serial/serial_line.h"

namespace quarn {

/// What an error number of the system means for a line.
LineError KindOf(int error);

/// The system's words for an error number.
QString SystemText(int error);

/// Both, with the device named. EBADF is "closed": the only bad descriptor there can be is that of a line
/// that has been closed.
LineFailure FailureOf(const QString& node, int error);

}  // namespace quarn
