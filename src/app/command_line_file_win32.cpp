#include <windows.h>

#include "app/command_line_file.h"

namespace quarn {

QString ReadCommandLineFile(const QStringList& /*arguments*/) {
  return WithinPathLimit(FileOfCommandLine(QString::fromWCharArray(GetCommandLineW())));
}

}  // namespace quarn
