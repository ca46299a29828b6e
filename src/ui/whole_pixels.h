#pragma once

#include <QtGlobal>

namespace quarn {

// On a desktop at 125, 150 or 175 per cent a length in the code's pixels may end between two pixels of the
// screen. Qt cuts a control at the upper one, but its style draws it up to the lower one: a border is
// missing.

/// The nearest length that is a whole number of the screen's pixels, and not below `least`; the larger of
/// two. `ratio`: the screen's pixels for each of the code's. With one of which no multiple up to eight is
/// whole, the length itself.
int WholePixels(int length, qreal ratio, int least = 0);

/// From now on all buttons, fields and combo boxes that a layout places have such sizes, unless theirs is
/// fixed. Their places stay as they are. Call it after the application object is made.
void KeepControlsWhole();

}  // namespace quarn
