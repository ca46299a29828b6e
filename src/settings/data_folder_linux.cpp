#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "identity.h"
#include "settings/data_folder.h"

namespace quarn {

namespace {

constexpr mode_t kPrivate = 0700;

bool MakeOneFolder(const QString& path) {
  return ::mkdir(QFile::encodeName(path).constData(), kPrivate) == 0 || errno == EEXIST;
}

/// An absolute path without a separator at its end.
bool MakeFolder(const QString& path) {
  if (MakeOneFolder(path)) return true;
  const QString above = path.left(path.lastIndexOf(QLatin1Char('/')));
  return errno == ENOENT && !above.isEmpty() && MakeFolder(above) && MakeOneFolder(path);
}

/// Calls it again while signals interrupt it.
template <class Call>
int Repeated(const Call& call) {
  int result = -1;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

}  // namespace

QString DataFolder() {
  // The desktop's rules say to ignore a relative path in the variable.
  QString base = qEnvironmentVariable("XDG_CONFIG_HOME");
  if (!QDir::isAbsolutePath(base)) {
    const QString home = qEnvironmentVariable("HOME");
    // Settings in the current folder would be lost at the next start from another one.
    if (!QDir::isAbsolutePath(home)) return {};
    base = home + QStringLiteral("/.config");
  }
  return QDir::cleanPath(base) + QLatin1Char('/') + QString::fromLatin1(identity::kMaker) + QLatin1Char('/') +
         QString::fromLatin1(identity::kName) + QLatin1Char('/');
}

QString WhyNoDataFolder() {
  return QStringLiteral("There is no folder for the settings: HOME does not name one from / on.");
}

bool MakeDataFolder(const QString& dataFolder) { return MakeFolder(QDir::cleanPath(dataFolder)); }

bool FlushNamesBeside(const QString& path) {
  const QByteArray folder = QFile::encodeName(QFileInfo(path).path() + u'/');
  const int descriptor =
      Repeated([&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (descriptor < 0) return false;
  // Some file systems flush no folder.
  const bool flushed = Repeated([descriptor] { return ::fsync(descriptor); }) == 0 || errno == EINVAL;
  ::close(descriptor);
  return flushed;
}

}  // namespace quarn
