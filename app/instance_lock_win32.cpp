#include <windows.h>

#include "app/instance_lock.h"

namespace quarn {

InstanceLock TakeInstanceLock() {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Quarn.exe");
  if (mutex == nullptr) return InstanceLock::Failed;
  // The handle stays open: the name is taken until the process ends.
  return GetLastError() == ERROR_ALREADY_EXISTS ? InstanceLock::TakenByAnother : InstanceLock::Taken;
}

}  // namespace quarn
