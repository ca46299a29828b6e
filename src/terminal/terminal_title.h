#pragma once

#include <QString>

#include "terminal/operation_log.h"

namespace quarn {

/// How a window's title names the port: its name while it is open, the name and "-NC" while it is not,
/// "NONE" when there is none.
QString PortTitlePart(const QString& portName, bool open);

/// The Terminal Screen's title, "Screeen" being its own spelling.
QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log);

}  // namespace quarn
