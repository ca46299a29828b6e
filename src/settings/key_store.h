#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

#include "settings/settings_text.h"

/// The operations on a settings file. Each reads the file again; a write replaces the whole file (temporary
/// file, flush, rename) and keeps its permissions, so a crash or a full disk leaves the old or the new file.
/// Nothing is cached or shown to the user; reasons go to the logging category "quarn.settings". Limits called
/// fatal end the program before anything is written. If two processes or threads write one file at the same
/// time, one change is lost, but never the file.
namespace quarn {

enum class PathKind { Nothing = 0, File = 1, Folder = 2 };

/// Follows symbolic links. A device, pipe or socket counts as missing, so that reading cannot block or
/// continue without end.
[[nodiscard]] PathKind ClassifyPath(const QString& path);

/// The file's text, cut after 16383 characters (or one less, to keep a surrogate pair together). Returns
/// nullopt if it cannot be opened or is not UTF-8.
[[nodiscard]] std::optional<QString> ReadWholeText(const QString& path);

/// The file's bytes, unchanged. Returns nullopt if it is not a file, cannot be read, or is larger than
/// kMaxFileBytes; of a larger file only as much is read as shows this.
[[nodiscard]] std::optional<QByteArray> ReadWholeBytes(const QString& path);

/// Replaces the file's content with the bytes. Returns true if they have been written. Refuses, without
/// changing anything, a folder or anything else that is not a file, and a file that this user, or everybody,
/// may not write. If the path is a symbolic link, the link stays and its target is replaced.
bool WriteWholeBytes(const QString& path, const QByteArray& bytes);

/// The same for a text of any length, in the encoding of a settings file.
bool WriteWholeText(const QString& path, const QString& text);

/// The value of the first line that begins with the key, unchanged. Returns nullopt if there is none before
/// ".END", or the file cannot be read, or it has at most one character or more than 16383. A value of more
/// than 1023 characters is fatal.
[[nodiscard]] std::optional<QString> ReadValue(const QString& path, SettingsKey key);

/// The same for several keys, in their order. All values are those of one moment, also while another program
/// replaces the file.
[[nodiscard]] QList<std::optional<QString>> ReadValues(const QString& path, const QList<SettingsKey>& keys);

/// Replaces the value of the first line that begins with the key; never adds a key. Returns false and writes
/// nothing if ".END" comes before the key or the file has more than 16383 characters. Returns true in every
/// other case, even if the file could not be read or written: such a failure is only logged. An updated text
/// of more than 16383 characters is fatal.
bool UpdateValue(const QString& path, SettingsKey key, const QString& value);

/// The same for several keys, replacing the file once. If a key comes after ".END" the result is false, and
/// the others are still written.
bool UpdateValues(const QString& path, const QList<NewValue>& values);

/// Whether the next start could read the file with these values. Check this before writing user input. True
/// also if nothing would be written.
[[nodiscard]] bool UpdateFits(const QString& path, const QList<NewValue>& values);

/// ListEntries: the path is not a file.
inline constexpr int kListNoFile = -1;
/// ListEntries: the file is empty or lacks ".BEGIN" or ".END". A file of exactly two entries gives the same
/// number, and callers treat it in the same way.
inline constexpr int kListFormatError = 2;

/// Fills `entries` with the lines between ".BEGIN" and ".END", in file order, and returns their count, or one
/// of the two numbers above (then the list is empty, except for a file of two entries). A line of more than
/// 1023 characters is fatal. Only the first 16383 characters of a file are used.
int ListEntries(const QString& path, QStringList& entries);

/// Writes a new file with the default lines. Returns false if the path is a folder or cannot be written.
bool WriteDefaultFile(const QString& path);

/// Rewrites the file in the normalised layout with one complete line added ("MARK_COLOR=WHITE"), unless its
/// key part occurs anywhere in the file. Lines outside the entries are dropped and the version line becomes
/// the current one. A file whose entries cannot be listed is not changed. Returns true if the file was
/// rewritten. A key part of more than 79 characters and a new text of more than 16383 are fatal.
bool AddKeyLine(const QString& path, const QString& line);

/// The same rewrite, removing every entry that begins with the key. An empty key removes no entry.
bool RemoveKey(const QString& path, SettingsKey key);

}  // namespace quarn
