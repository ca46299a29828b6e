#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

#include "settings/settings_text.h"

/// The operations on a settings file. Each reads the file anew and, where it writes, replaces the whole
/// file: written beside, flushed, renamed, with its permissions kept, so that a crash or a full disk leaves
/// the old file or the new one. Nothing is cached, nothing is shown to the user; reasons go to the logging
/// category "quarn.settings". Limits called fatal end the program before anything is written. Two
/// processes or threads that write one file at a time lose one of the two changes, never the file.
namespace quarn {

enum class PathKind { Nothing = 0, File = 1, Folder = 2 };

/// Follows symbolic links. A device, pipe or socket is no settings file and counts as nothing there, so
/// that no read of one can block or run without end.
[[nodiscard]] PathKind ClassifyPath(const QString& path);

/// The file's text, cut after 16383 characters (or one less, where a character's two halves would part).
/// Nothing when it cannot be opened or is not UTF-8.
[[nodiscard]] std::optional<QString> ReadWholeText(const QString& path);

/// The file's bytes as they stand. Nothing when it is no file, cannot be read, or is larger than
/// kMaxFileBytes; of a larger one no more is read than tells that.
[[nodiscard]] std::optional<QByteArray> ReadWholeBytes(const QString& path);

/// Writes the bytes as the file's whole content. True when they have been written. Refused, and nothing
/// touched: a folder or whatever else is no file, and a file that this user, or everybody, lacks the write
/// permission for. A symbolic link stays and the file that it leads to is replaced.
bool WriteWholeBytes(const QString& path, const QByteArray& bytes);

/// The same with a text of any length, in the encoding of a settings file.
bool WriteWholeText(const QString& path, const QString& text);

/// The value of the first line that begins with the key, as it stands. Nothing when there is none before
/// ".END", or the file cannot be read, or it holds at most one character or more than 16383. A value of
/// more than 1023 characters is fatal.
[[nodiscard]] std::optional<QString> ReadValue(const QString& path, SettingsKey key);

/// Replaces the value of the first line that begins with the key; never adds a key. False, and nothing
/// written, when ".END" comes before the key or the file has more than 16383 characters. True in every
/// other case, even when the file could not be read or written: such a failure is only logged. An updated
/// text of more than 16383 characters is fatal.
bool UpdateValue(const QString& path, SettingsKey key, const QString& value);

/// The same for several keys with one replacement of the file. A key behind ".END" makes the result false,
/// and the others are still written.
bool UpdateValues(const QString& path, const QList<NewValue>& values);

/// Whether the file with these values would be read again at the next start. Whoever writes what a person has
/// typed asks first. True as well where nothing would be written.
[[nodiscard]] bool UpdateFits(const QString& path, const QList<NewValue>& values);

/// ListEntries: the path is not a file.
inline constexpr int kListNoFile = -1;
/// ListEntries: the file is empty or lacks ".BEGIN" or ".END". A file of exactly two entries gives the same
/// number, and callers treat it alike.
inline constexpr int kListFormatError = 2;

/// Fills `entries` with the lines between ".BEGIN" and ".END", in file order, and returns their count, or
/// one of the two numbers above (then the list is empty, save for a file of two entries). A line of more
/// than 1023 characters is fatal. Of a longer file the first 16383 characters count.
int ListEntries(const QString& path, QStringList& entries);

/// Writes a fresh file with the default lines. False when the path is a folder or cannot be written.
bool WriteDefaultFile(const QString& path);

/// Rewrites the file in the normalised layout with one complete line added ("MARK_COLOR=WHITE"), unless its
/// key part occurs anywhere in the file. Lines outside the entries are dropped and the version line becomes
/// the current one. A file whose entries cannot be listed is left alone. True when the file was rewritten.
/// A key part of more than 79 characters and a new text of more than 16383 are fatal.
bool AddKeyLine(const QString& path, const QString& line);

/// The same rewrite with every entry that begins with the key removed. An empty key removes no entry.
bool RemoveKey(const QString& path, SettingsKey key);

}  // namespace quarn
