#include "app/file_argument.h"

namespace quarn {

QString ReadFileArgument(const QStringList& arguments) { return WithinPathLimit(arguments.value(1)); }

}  // namespace quarn
