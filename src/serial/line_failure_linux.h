#pragma once

#include "serial/serial_line.h"

namespace quarn {

/// The kind of line error for an error number of the system.
LineError LineErrorFromErrno(int error);

/// The system's text for an error number.
QString SystemText(int error);

/// Both, with the name of the device. EBADF means "closed": the only invalid descriptor possible is that of a
/// closed line.
LineFailure FailureOf(const QString& node, int error);

}  // namespace quarn
