#include "app/user_folders_linux.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "settings/data_folder.h"

namespace quarn {
namespace {

constexpr mode_t kPrivateFolder = 0700;

/// Whether only this user can have put something there.
bool IsThisUsersAlone(const QString& folder) {
  struct stat info {};
  return ::lstat(QFile::encodeName(folder).constData(), &info) == 0 && S_ISDIR(info.st_mode) &&
         info.st_uid == ::geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace

QString SessionFolder() {
  QString session = QDir::cleanPath(qEnvironmentVariable("XDG_RUNTIME_DIR"));
  if (!QDir::isAbsolutePath(session)) return {};
  ::mkdir(QFile::encodeName(session).constData(), kPrivateFolder);
  return IsThisUsersAlone(session) ? session : QString();
}

QString SettingsFolder() {
  QString settings = DataFolder();
  if (!settings.isEmpty()) MakeDataFolder(settings);
  return settings;
}

}  // namespace quarn
