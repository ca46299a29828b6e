#pragma once

#include <QString>

#include "terminal/operation_log.h"

namespace quarn {

/// The port in a window's title: its name while it is open, the name and "-NC" while it is not, "NONE" if
/// there is none.
QString PortTitlePart(const QString& portName, bool open);

/// The Terminal Screen's title; the spelling "Screeen" is intended.
QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log);

}  // namespace quarn
