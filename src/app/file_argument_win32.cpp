#include <windows.h>

#include "app/file_argument.h"

namespace quarn {

QString ReadFileArgument(const QStringList& /*arguments*/) {
  return WithinPathLimit(FileOfCommandLine(QString::fromWCharArray(GetCommandLineW())));
}

}  // namespace quarn
