#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>
#include <system_error>

#include "app/instance_lock.h"
#include "settings/data_folder.h"

namespace quarn {

namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;

/// Whether nobody else could have put something there.
bool IsThisUsersAlone(const QString& folder) {
  struct stat info {};
  return ::lstat(QFile::encodeName(folder).constData(), &info) == 0 && S_ISDIR(info.st_mode) &&
         info.st_uid == ::geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// The session's own folder, gone with the session, where the system sets one up. Otherwise the one of the
/// settings, which are what the lock is for: no place that another user could take first.
QString FolderOfLock() {
  QString session = QDir::cleanPath(qEnvironmentVariable("XDG_RUNTIME_DIR"));
  if (QDir::isAbsolutePath(session)) {
    ::mkdir(QFile::encodeName(session).constData(), kPrivateFolder);
    if (IsThisUsersAlone(session)) return session;
  }
  QString settings = DataFolder();
  if (!settings.isEmpty()) MakeDataFolder(settings);
  return settings;
}

InstanceLock LockFile(const QByteArray& path) {
  const int descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivateFile);
  if (descriptor < 0) return InstanceLock::Failed;
  int result = 0;
  do {
    result = ::flock(descriptor, LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return InstanceLock::Taken;  // the descriptor stays open: it is the lock
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return error == EWOULDBLOCK ? InstanceLock::TakenByAnother : InstanceLock::Failed;
}

}  // namespace

InstanceLock TakeInstanceLock(QString& reason) {
  const QString folder = FolderOfLock();
  if (folder.isEmpty()) {
    reason = WhyNoDataFolder();
    return InstanceLock::Failed;
  }
  const QString path = QDir(folder).filePath(QStringLiteral("Quarn.exe.lock"));
  const InstanceLock lock = LockFile(QFile::encodeName(path));
  if (lock == InstanceLock::Failed) {
    reason = path + QStringLiteral(": ") + QString::fromStdString(std::generic_category().message(errno));
  }
  return lock;
}

}  // namespace quarn
