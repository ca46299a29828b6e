#pragma once

#include <QStringList>
#include <QStringView>

namespace quarn {

/// The maximum number of entries in a list of lines or file entries.
inline constexpr qsizetype kMaxLines = 1024;
/// The longest line that can be split off, in 16-bit characters; a longer one is a fatal bounds error.
inline constexpr qsizetype kMaxLineCharacters = 1023;

/// Splits a text of any length after each terminator and removes the terminators. Text after the last
/// terminator is a line too, unless it is empty. Lines beyond the first kMaxLines are ignored.
[[nodiscard]] QStringList SplitTextLines(QStringView text, QChar terminator = u'\n');

/// Removes empty entries and sorts the rest in ascending order of 16-bit code units, in any locale. A list of
/// more than kMaxLines entries is not changed.
void SortTextList(QStringList& list);

}  // namespace quarn
