#include "settings/key_store.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/bounds.h"
#include "base/system_path.h"
#include "settings/settings_table.h"
#include "settings/settings_text.h"

namespace quarn {

namespace {

Q_LOGGING_CATEGORY(lcSettings, "quarn.settings")

// A 16-bit character needs at most three bytes of UTF-8, so this is always more than the largest valid file,
// and refusing a huge file costs no more than this.
constexpr qint64 kReadCap = 3 * (kMaxFileCharacters + 1) + 16;

/// The file's bytes, or the first `limit` of them.
std::optional<QByteArray> ReadBytes(const QString& path, qint64 limit) {
  QFile file(path);
  if (ClassifyPath(path) != PathKind::File || !file.open(QIODevice::ReadOnly)) {
    // The message handler adds the line feed.
    qCDebug(lcSettings, "No file found !!");
    return std::nullopt;
  }
  QByteArray bytes = file.read(limit);
  if (file.error() == QFileDevice::NoError) return bytes;
  qCDebug(lcSettings) << "cannot read" << path << file.errorString();
  return std::nullopt;
}

/// The file's text, or that of its first kReadCap bytes; then it is longer than kMaxFileCharacters.
std::optional<QString> ReadText(const QString& path) {
  const std::optional<QByteArray> bytes = ReadBytes(path, kReadCap);
  if (!bytes) return std::nullopt;
  const BytesAre extent = bytes->size() < kReadCap ? BytesAre::Whole : BytesAre::CutShort;
  std::optional<QString> text = DecodeSettingsText(*bytes, extent);
  if (!text) qCDebug(lcSettings) << "not valid UTF-8:" << path;
  return text;
}

/// A file that this user, or nobody, may write: users protect a file by removing its write permission for
/// everybody, and a replacement, or an administrator, would ignore that.
bool IsReadOnly(const QFileInfo& info) {
  constexpr QFile::Permissions anybody = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
  return !info.isWritable() || !(info.permissions() & anybody);
}

/// The path at the end of a chain of links; nullopt if the system does not say. A link that is not recognised
/// would be replaced by a file. Nor does it if a link's target is no text.
std::optional<QString> EndOfLinks(const QString& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path end = SystemPath(path);
  for (int links = 0; links < kMostLinks; ++links) {
    std::error_code error;
    const auto type = std::filesystem::symlink_status(end, error).type();
    if (type == std::filesystem::file_type::none) return std::nullopt;
    if (type != std::filesystem::file_type::symlink) {
      if (links == 0) return path;
      const QString name = NameOf(end);
      return SystemPath(name) == end ? std::optional(name) : std::nullopt;
    }
    const std::filesystem::path target = std::filesystem::read_symlink(end, error);
    if (error) return std::nullopt;
    end = end.parent_path() / target;
  }
  return std::nullopt;
}

/// Replaces the file at the path, which must not be a link. On failure `reason` says why.
bool ReplaceFile(const QString& path, const QByteArray& bytes, QString& reason) {
  std::error_code error;
  const auto type = std::filesystem::status(SystemPath(path), error).type();
  const bool replaces = type == std::filesystem::file_type::regular;
  // A replacement would replace anything that is there: a folder, a pipe, a device.
  const QFileInfo info(path);
  if ((!replaces && type != std::filesystem::file_type::not_found) || (replaces && IsReadOnly(info))) {
    reason = QStringLiteral("it is read-only, or no file");
    return false;
  }
  QSaveFile file(path);
  // Without this, if the folder accepts no new file, the bytes would be written into the target itself, and a
  // crash would leave half of them.
  file.setDirectWriteFallback(false);
  // A buffered write would fail only inside commit(), which then renames the incomplete file anyway.
  const bool open = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
  // Opening does this too, but not if it cannot examine the old file: then the new one would have no
  // permissions. Some file systems have the same for all files, and refuse to set any.
  const bool permitted = open && (!replaces || file.setPermissions(info.permissions()) ||
                                  file.permissions() == info.permissions());
  const bool written = permitted && file.write(bytes) == bytes.size() && file.commit();
  if (!written) reason = file.errorString();
  return written;
}

bool WriteUpdatedText(const QString& path, const QString& text) {
  RequireWithinBounds("updated text", kMaxFileCharacters, text.size());
  return WriteWholeText(path, text);
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
  std::optional<QByteArray> bytes = ReadBytes(path, kMaxFileBytes + 1);
  if (!bytes || bytes->size() <= kMaxFileBytes) return bytes;
  qCDebug(lcSettings) << "too large for a settings file:" << path;
  return std::nullopt;
}

bool WriteWholeBytes(const QString& path, const QByteArray& bytes) {
  const std::optional<QString> end = EndOfLinks(path);
  QString reason = QStringLiteral("it leads nowhere");
  if (end && ReplaceFile(*end, bytes, reason)) return true;
  qCDebug(lcSettings) << "cannot write" << path << reason;
  return false;
}

bool WriteWholeText(const QString& path, const QString& text) {
  return WriteWholeBytes(path, EncodeSettingsText(text));
}

std::optional<QString> ReadValue(const QString& path, SettingsKey key) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadText(path);
  return text ? FindValue(*text, key) : std::nullopt;
}

QList<std::optional<QString>> ReadValues(const QString& path, const QList<SettingsKey>& keys) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadText(path);
  QList<std::optional<QString>> values;
  for (const SettingsKey key : keys) values.append(text ? FindValue(*text, key) : std::nullopt);
  return values;
}

bool UpdateValue(const QString& path, SettingsKey key, const QString& value) {
  // A list made from braces does not check that it got memory.
  QList<NewValue> values;
  values.append({key, value});
  return UpdateValues(path, values);
}

bool UpdateValues(const QString& path, const QList<NewValue>& values) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadText(path);
  if (!text) return true;
  const ValueUpdate update = UpdateText(*text, values);
  if (update.newText) WriteUpdatedText(path, *update.newText);
  return update.ok;
}

bool UpdateFits(const QString& path, const QList<NewValue>& values) {
  const auto isLine = [](const NewValue& each) { return !each.value.contains(u'\n'); };
  if (!std::all_of(values.begin(), values.end(), isLine)) return false;
  const BoundsFile file(path);
  const std::optional<QString> text = ReadText(path);
  const std::optional<QString> updated = text ? UpdateText(*text, values).newText : std::nullopt;
  return !updated || FitsFile(*updated);
}

int ListEntries(const QString& path, QStringList& entries) {
  const BoundsFile file(path);
  entries.clear();
  if (ClassifyPath(path) != PathKind::File) return kListNoFile;
  const std::optional<QString> text = ReadWholeText(path);
  std::optional<QStringList> found = text ? EntriesOf(*text) : std::nullopt;
  if (!found) return kListFormatError;
  entries.swap(*found);
  return static_cast<int>(entries.size());
}

bool WriteDefaultFile(const QString& path) {
  // A folder of that name is refused, like any target that cannot be written.
  return WriteWholeText(path, NormalisedText(DefaultLines()));
}

bool AddKeyLine(const QString& path, const QString& line) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadWholeText(path);
  if (!text) return false;
  const std::optional<QString> longer = TextWithKeyLine(*text, line);
  return longer && WriteUpdatedText(path, *longer);
}

bool RemoveKey(const QString& path, SettingsKey key) {
  const BoundsFile file(path);
  const std::optional<QString> text = ReadWholeText(path);
  if (!text) return false;
  const std::optional<QString> shorter = TextWithoutKey(*text, key);
  return shorter && WriteUpdatedText(path, *shorter);
}

}  // namespace quarn
