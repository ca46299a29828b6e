#include "settings/damaged_file.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/system_path.h"
#include "settings/data_folder.h"
#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_text.h"

namespace quarn {

namespace {

Q_LOGGING_CATEGORY(lcDamaged, "quarn.settings")

bool CopyToDamagedFile(const QString& path, const QByteArray& bytes) {
  const QString kept = DamagedFileOf(path);
  if (!WriteWholeBytes(kept, bytes)) return false;
  // With the same permissions; and writable, so that the next one can replace it.
  QFile::setPermissions(kept, QFile::permissions(path) | QFile::WriteOwner);
  // The file itself is replaced next. After a power loss one of the two must be there.
  return FlushNamesBeside(kept);
}

}  // namespace

bool KeepDamagedFile(const QString& path) {
  if (ClassifyPath(path) != PathKind::File) return true;
  if (IsTooLargeForSettings(path)) return MoveToDamagedFile(path);
  const std::optional<QByteArray> bytes = ReadWholeBytes(path);
  // An unreadable file may be worth more than the defaults.
  if (!bytes) return false;
  // The defaults never replace the kept copy of a damaged file.
  const bool nothingToKeep = bytes->isEmpty() || *bytes == EncodeSettingsText(NormalisedText(DefaultLines()));
  return nothingToKeep || CopyToDamagedFile(path, *bytes);
}

bool MoveToDamagedFile(const QString& path) {
  std::error_code error;
  const QString kept = DamagedFileOf(path);
  std::filesystem::rename(SystemPath(path), SystemPath(kept), error);
  if (!error) {
    // So that the next one can replace it.
    QFile::setPermissions(kept, QFile::permissions(kept) | QFile::WriteOwner);
    // Something else takes its place next.
    return FlushNamesBeside(path);
  }
  qCDebug(lcDamaged) << "cannot move" << path << QString::fromStdString(error.message());
  return false;
}

bool IsTooLargeForSettings(const QString& path) {
  return ClassifyPath(path) == PathKind::File && QFileInfo(path).size() > kMaxFileBytes;
}

}  // namespace quarn
