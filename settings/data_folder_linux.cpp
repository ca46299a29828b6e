#include <sys/stat.h>

#include <QDir>
#include <QFile>

#include "identity.h"
#include "settings/data_folder.h"

namespace quarn {

namespace {
constexpr mode_t kPrivate = 0700;
}

QString DataFolder() {
  // A relative path in the variable is to be ignored, as the desktop's rules have it.
  QString base = qEnvironmentVariable("XDG_CONFIG_HOME");
  if (!QDir::isAbsolutePath(base)) base = QDir::homePath() + QStringLiteral("/.config");
  QDir().mkpath(base);
  const QString makers = base + QLatin1Char('/') + QString::fromLatin1(identity::kMaker);
  // A failure shows when the first file is to be written there.
  ::mkdir(QFile::encodeName(makers).constData(), kPrivate);
  return makers + QLatin1Char('/') + QString::fromLatin1(identity::kName) + QLatin1Char('/');
}

void MakeDataFolder(const QString& dataFolder) {
  ::mkdir(QFile::encodeName(dataFolder).constData(), kPrivate);
}

}  // namespace quarn
