#pragma once

#include <QString>

namespace quarn {

/// The values that depend on INPUT_MAX.
struct ScreenWidth {
  QString letter;    ///< as the window's title shows it
  int commandLimit;  ///< longest command that can be typed, in characters
  int lineWidth;     ///< longest line of a response in the log, in characters
  int buttonWidth;   ///< pixels
  int windowWidth;   ///< pixels, frame included, without line numbers
};

/// The row for "N", "M" or "W". For any other text: no input is possible, and lines are as narrow as for "N".
const ScreenWidth& ScreenWidthOf(const QString& inputMax);

}  // namespace quarn
