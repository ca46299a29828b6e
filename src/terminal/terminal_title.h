#pragma once

#include <QString>

#include "terminal/operation_log.h"

namespace quarn {

/// The Terminal Screen's title, "Screeen" being its own spelling.
QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log);

}  // namespace quarn
