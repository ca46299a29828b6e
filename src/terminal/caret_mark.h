#pragma once

#include <QString>

namespace quarn {

/// `text` with its character at `position` replaced; appended if the position is at or beyond the end.
/// `position` must not be negative.
inline QString WithCharacterAt(QString text, int position, QChar character) {
  if (position < text.size()) {
    text[position] = character;
  } else {
    text.append(character);
  }
  return text;
}

}  // namespace quarn
