#pragma once

#include <QStringList>
#include <QStringView>

namespace quarn {

/// A list of lines, file entries or port names holds at most this many unless its owner says less.
inline constexpr qsizetype kMaxLines = 1024;
/// A line being split off, in 16-bit characters; one more is a fatal bounds error.
inline constexpr qsizetype kMaxLineCharacters = 1023;

/// Cuts a text of any length after every terminator and drops the terminators; what follows the last one is a
/// line too unless it is empty. Lines beyond the first kMaxLines are not seen.
[[nodiscard]] QStringList SplitTextLines(QStringView text, QChar terminator = u'\n');

/// Drops the empty entries and sorts the rest in ascending order of 16-bit code units, whatever the
/// locale. A list of more than `capacity` entries is left as it is.
void SortTextList(QStringList& list, qsizetype capacity = kMaxLines);

}  // namespace quarn
