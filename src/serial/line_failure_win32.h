#pragma once

#include <QString>

#include "serial/serial_line.h"

namespace quarn {

/// The failure for a system error code of a comm call (GetLastError), with the system's text.
LineFailure FailureOfSystemError(unsigned long code, const QString& device);

}  // namespace quarn
