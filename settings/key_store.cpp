#include "settings/key_store.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>
#include <filesystem>
#include <system_error>

#include "settings/settings_table.h"
#include "settings/settings_text.h"

namespace quarn {

namespace {

Q_LOGGING_CATEGORY(lcSettings, "quarn.settings")

// No 16-bit character takes more than three bytes of UTF-8, so this much is always more than the largest
// file that counts, and a huge one costs no more than this to refuse.
constexpr qint64 kReadCap = 3 * (kMaxFileCharacters + 1) + 16;

/// The file's text, or the first kReadCap bytes of it; then it is longer than kMaxFileCharacters.
std::optional<QString> ReadText(const QString& path) {
  QFile file(path);
  if (ClassifyPath(path) != PathKind::File || !file.open(QIODevice::ReadOnly)) {
    // The message handler adds the line feed.
    qCDebug(lcSettings, "No file found !!");
    return std::nullopt;
  }
  const QByteArray bytes = file.read(kReadCap);
  if (file.error() != QFileDevice::NoError) {
    qCDebug(lcSettings) << "cannot read" << path << file.errorString();
    return std::nullopt;
  }
  const BytesAre extent = bytes.size() < kReadCap ? BytesAre::Whole : BytesAre::CutShort;
  std::optional<QString> text = DecodeSettingsText(bytes, extent);
  if (!text) qCDebug(lcSettings) << "not valid UTF-8:" << path;
  return text;
}

/// Whether a file stands at the path or may be made there. A replacement would put a file in the place of
/// whatever is there: of a pipe, a device, a link that leads in a circle.
bool MayBecomeFile(const QString& path) {
  std::error_code error;
  const auto type = std::filesystem::status(path.toStdU16String(), error).type();
  return type == std::filesystem::file_type::regular || type == std::filesystem::file_type::not_found;
}

/// A file that this user may not write, or that nobody may: taking the write permission from everybody is
/// how a person protects a file, and a replacement, or an administrator, would get past it.
bool IsReadOnly(const QString& path) {
  const QFileInfo info(path);
  constexpr QFile::Permissions anybody = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
  return info.exists() && (!info.isWritable() || !(info.permissions() & anybody));
}

}  // namespace

PathKind ClassifyPath(const QString& path) {
  const QFileInfo info(path);
  if (info.isDir()) return PathKind::Folder;
  return info.isFile() ? PathKind::File : PathKind::Nothing;
}

std::optional<QString> ReadWholeText(const QString& path) {
  std::optional<QString> text = ReadText(path);
  if (text && text->size() > kMaxFileCharacters) {
    text->truncate(kMaxFileCharacters);
    if (text->back().isHighSurrogate()) text->chop(1);
  }
  return text;
}

std::optional<QByteArray> ReadWholeBytes(const QString& path) {
  QFile file(path);
  if (ClassifyPath(path) != PathKind::File || !file.open(QIODevice::ReadOnly)) {
    qCDebug(lcSettings, "No file found !!");
    return std::nullopt;
  }
  const QByteArray bytes = file.readAll();
  if (file.error() == QFileDevice::NoError) return bytes;
  qCDebug(lcSettings) << "cannot read" << path << file.errorString();
  return std::nullopt;
}

bool WriteWholeBytes(const QString& path, const QByteArray& bytes) {
  if (!MayBecomeFile(path) || IsReadOnly(path)) {
    qCDebug(lcSettings) << "cannot write" << path << "it is read-only, or no file";
    return false;
  }
  QSaveFile file(path);
  // Without this the bytes would go into the target itself where its folder refuses a new file, and a
  // crash would leave half of them.
  file.setDirectWriteFallback(false);
  // A buffered write would fail no sooner than inside commit(), which then renames half a file all the same.
  if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size() &&
      file.commit()) {
    return true;
  }
  qCDebug(lcSettings) << "cannot write" << path << file.errorString();
  return false;
}

bool WriteWholeText(const QString& path, const QString& text) {
  return WriteWholeBytes(path, EncodeSettingsText(text));
}

std::optional<QString> ReadValue(const QString& path, SettingsKey key) {
  const std::optional<QString> text = ReadText(path);
  return text ? FindValue(*text, key) : std::nullopt;
}

bool UpdateValue(const QString& path, SettingsKey key, const QString& value) {
  const std::optional<QString> text = ReadText(path);
  if (!text) return true;
  const ValueUpdate update = UpdateText(*text, key, value);
  if (update.newText) WriteWholeText(path, *update.newText);
  return update.ok;
}

int ListEntries(const QString& path, QStringList& entries) {
  entries.clear();
  if (ClassifyPath(path) != PathKind::File) return kListNoFile;
  const std::optional<QString> text = ReadWholeText(path);
  std::optional<QStringList> found = text ? EntriesOf(*text) : std::nullopt;
  if (!found) return kListFormatError;
  entries.swap(*found);
  return static_cast<int>(entries.size());
}

bool WriteDefaultFile(const QString& path) {
  // A folder of that name is refused like any other target that cannot be written.
  return WriteWholeText(path, NormalisedText(DefaultLines()));
}

bool AddKeyLine(const QString& path, const QString& line) {
  const std::optional<QString> text = ReadWholeText(path);
  if (!text) return false;
  const std::optional<QString> longer = TextWithKeyLine(*text, line);
  return longer && WriteWholeText(path, *longer);
}

bool RemoveKey(const QString& path, SettingsKey key) {
  const std::optional<QString> text = ReadWholeText(path);
  if (!text) return false;
  const std::optional<QString> shorter = TextWithoutKey(*text, key);
  return shorter && WriteWholeText(path, *shorter);
}

}  // namespace quarn
