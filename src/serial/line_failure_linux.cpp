#include "serial/line_failure_linux.h"

#include <cerrno>
#include <system_error>

namespace quarn {

LineError LineErrorFromErrno(int error) {
  switch (error) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
    case ELOOP:
    case EISDIR:
    case ENOTDIR:
    case ENOTTY:
      return LineError::NotFound;
    case EACCES:
    case EPERM:
      return LineError::NoPermission;
    case EBUSY:
    case EWOULDBLOCK:
      return LineError::InUse;
    case EINVAL:
      return LineError::Refused;
    case EIO:
    case EPIPE:
    case EBADF:
      return LineError::Disconnected;
    case ECANCELED:
      return LineError::Cancelled;
    default:
      return LineError::Other;
  }
}

QString SystemText(int error) {
  if (error == EBADF) return QStringLiteral("closed");
  return QString::fromStdString(std::generic_category().message(error));
}

LineFailure FailureOf(const QString& node, int error) {
  return {LineErrorFromErrno(error), QStringLiteral("%1: %2").arg(node, SystemText(error))};
}

}  // namespace quarn
