#include <windows.h>

#include <QString>
#include <system_error>

#include "app/instance_lock.h"

namespace quarn {

InstanceLock TakeInstanceLock(QString& reason) {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Quarn.exe");
  const DWORD error = GetLastError();
  if (mutex == nullptr) {
    reason =
        QStringLiteral("Quarn.exe: ") +
        QString::fromLocal8Bit(std::system_category().message(static_cast<int>(error)).c_str()).trimmed();
    return InstanceLock::Failed;
  }
  // The handle stays open: the name is taken until the process ends.
  return error == ERROR_ALREADY_EXISTS ? InstanceLock::TakenByAnother : InstanceLock::Taken;
}

}  // namespace quarn
