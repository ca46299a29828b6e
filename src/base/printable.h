#pragma once

#include <QString>

namespace quarn {

/// Whether it is visible as a character of its own on its line: no control character, none that breaks the
/// line or turns the direction of text.
bool IsPrintable(char32_t character);

/// The text as a terminal and a label show it, on one line and in its order: what is not printable is
/// replaced by question marks.
QString Printable(QString text);

}  // namespace quarn
