#pragma once

#include <QColor>

namespace quarn {

/// How much two colours differ in brightness for the eye: from 1, not at all, to 21, black on white.
double ContrastRatio(const QColor& one, const QColor& other);

/// This colour as it is where it can be read on that background; else as much lighter, or darker, as it
/// takes.
QColor ReadableOn(const QColor& background, const QColor& colour);

}  // namespace quarn
