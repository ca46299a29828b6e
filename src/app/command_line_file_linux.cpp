#include "app/command_line_file.h"

namespace quarn {

QString ReadCommandLineFile(const QStringList& arguments) { return WithinPathLimit(arguments.value(1)); }

}  // namespace quarn
