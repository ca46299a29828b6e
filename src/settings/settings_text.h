#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

#include "settings/settings_key.h"

/// The text of a settings file and the operations on it, without a file: ".VER=" line, ".BEGIN", one
/// KEY=VALUE line per setting, ".END". All lengths are in 16-bit characters; a line ends at a line feed.
/// Blanks are never trimmed and there are no comments. Exceeding a limit called fatal ends the program
/// (FatalBoundsError). Any thread.
namespace quarn {

/// Larger files are never settings files.
inline constexpr qsizetype kMaxFileBytes = 16384;
/// Longer texts are not searched and not updated; writing a longer one as an update is fatal.
inline constexpr qsizetype kMaxFileCharacters = 16383;
/// A longer value is fatal when it is looked up.
inline constexpr qsizetype kMaxValueCharacters = 1023;
/// A longer key part is fatal when its line is added.
inline constexpr qsizetype kMaxKeyPartCharacters = 79;

enum class BytesAre { Whole, CutShort };

/// Converts the bytes of a file to text: UTF-8 with or without a byte-order mark; carriage return plus line
/// feed becomes a line feed, a lone carriage return stays. Returns nullopt if the bytes are not valid UTF-8,
/// so that no file is ever rewritten with replacement characters. Bytes that are CutShort may end inside a
/// character, which is left out.
[[nodiscard]] std::optional<QString> DecodeSettingsText(QByteArrayView bytes,
                                                        BytesAre extent = BytesAre::Whole);

/// Converts text to the bytes of a file: byte-order mark, UTF-8, every line feed as carriage return plus line
/// feed.
[[nodiscard]] QByteArray EncodeSettingsText(const QString& text);

/// Whether the next start could read a file with this text: checks bytes, characters and the length of each
/// line.
[[nodiscard]] bool FitsFile(const QString& text);

/// The rest of the first line that begins with the key; lines before ".BEGIN" are searched too. A line that
/// is exactly ".END" ends the search. Returns nullopt for a text of at most one character or of more than
/// kMaxFileCharacters.
[[nodiscard]] std::optional<QString> FindValue(const QString& text, SettingsKey key);

/// The new value of a key.
struct NewValue {
  SettingsKey key;
  QString value;
};

struct ValueUpdate {
  /// False when ".END" comes before one of the keys, or the text is too long.
  bool ok = false;
  /// The new content of the file; nullopt if the file must not be changed.
  std::optional<QString> newText;
};

/// The text with the value of the first line that begins with the key replaced, for each key in turn. That
/// line then ends with a line feed; all else is unchanged. A missing key is never added: a text without the
/// key and without ".END" is returned unchanged. The result may have any length.
[[nodiscard]] ValueUpdate UpdateText(const QString& text, const QList<NewValue>& values);

/// The lines between the first that begins with ".BEGIN" and the first, from the top, that begins with
/// ".END". Empty if ".END" comes first. Returns nullopt if either is missing, or not among the first
/// kMaxLines.
[[nodiscard]] std::optional<QStringList> EntriesOf(const QString& text);

/// The layout of every file written as a whole: the current version line, ".BEGIN", the entries sorted and
/// without empty ones, ".END". The result may have any length.
[[nodiscard]] QString NormalisedText(QStringList entries);

/// The normalised text with one complete line ("KEY=VALUE") added. Returns nullopt if nothing must be added:
/// its key part occurs anywhere in the text, or the entries cannot be listed.
[[nodiscard]] std::optional<QString> TextWithKeyLine(const QString& text, const QString& line);

/// The normalised text without the entries that begin with the key. An empty key removes no entry. Returns
/// nullopt if the entries cannot be listed.
[[nodiscard]] std::optional<QString> TextWithoutKey(const QString& text, SettingsKey key);

}  // namespace quarn
