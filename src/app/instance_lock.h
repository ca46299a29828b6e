#pragma once

#include <QString>

namespace quarn {

enum class InstanceLock { Taken, TakenByAnother, Failed };

/// Takes the lock that only one running program of a user can have, named "Quarn.exe". Once taken it is
/// kept until the process ends, however it ends; there is nothing to release. When it fails, `reason` says
/// why, in the system's words.
InstanceLock TakeInstanceLock(QString& reason);

}  // namespace quarn
