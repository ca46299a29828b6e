#include "serial/line_failure_win32.h"

#include <windows.h>

#include <array>

namespace quarn {
namespace {

/// ERROR_NO_SUCH_DEVICE, which MinGW-w64's headers lack.
constexpr unsigned long kNoSuchDevice = 433;

LineError LineErrorFromSystemCode(unsigned long code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
      return LineError::NotFound;
    // A comm port that another program has open is refused as "access denied".
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY:
      return LineError::InUse;
    case ERROR_PRIVILEGE_NOT_HELD:
      return LineError::NoPermission;
    case ERROR_INVALID_PARAMETER:
    case ERROR_NOT_SUPPORTED:
      return LineError::Refused;
    case ERROR_OPERATION_ABORTED:
      return LineError::Cancelled;
    case ERROR_BAD_COMMAND:
    case ERROR_GEN_FAILURE:
    case ERROR_NOT_READY:
    case ERROR_DEV_NOT_EXIST:
    case kNoSuchDevice:
    case ERROR_DEVICE_NOT_CONNECTED:
    case ERROR_DEVICE_REMOVED:
    case ERROR_INVALID_HANDLE:
      return LineError::Disconnected;
    default:
      return LineError::Other;
  }
}

}  // namespace

LineFailure FailureOfSystemError(unsigned long code, const QString& device) {
  std::array<wchar_t, 512> text{};
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      code, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
  const QString words = length > 0 ? QString::fromWCharArray(text.data(), int(length)).trimmed()
                                   : QStringLiteral("system error %1").arg(code);
  return {LineErrorFromSystemCode(code), device + QStringLiteral(": ") + words};
}

}  // namespace quarn
