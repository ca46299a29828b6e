#pragma once

#include <QString>

#include "serial/serial_line.h"

namespace quarn {

/// A system error code of a comm call (GetLastError) with the system's words for it.
LineFailure FailureOfSystemError(unsigned long code, const QString& device);

}  // namespace quarn
