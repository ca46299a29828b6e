#pragma once

#include <QString>

namespace quarn {

enum class InstanceLock { Taken, TakenByAnother, Failed };

/// Takes the lock for one running program per user, named "Quarn.exe". It is kept until the process ends, in
/// any way; it cannot be released. If it fails, `reason` gives the system's text.
InstanceLock TakeInstanceLock(QString& reason);

}  // namespace quarn
