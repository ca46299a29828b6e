#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QFile>
#include <QStandardPaths>
#include <cerrno>

#include "app/instance_lock.h"

namespace quarn {

InstanceLock TakeInstanceLock() {
  // A folder of this user's alone, gone with the session; where the system sets none up, one is made.
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (folder.isEmpty()) return InstanceLock::Failed;
  const QByteArray path = QFile::encodeName(folder + QStringLiteral("/Quarn.exe.lock"));
  constexpr mode_t kPrivate = 0600;
  const int descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivate);
  if (descriptor < 0) return InstanceLock::Failed;
  int result = 0;
  do {
    result = ::flock(descriptor, LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return InstanceLock::Taken;  // the descriptor stays open: it is the lock
  const InstanceLock refused = errno == EWOULDBLOCK ? InstanceLock::TakenByAnother : InstanceLock::Failed;
  ::close(descriptor);
  return refused;
}

}  // namespace quarn
