#pragma once

#include <QColor>

namespace quarn {

/// The contrast of two colours, from 1 (none) to 21 (black on white).
double ContrastRatio(const QColor& one, const QColor& other);

/// Whether white is easier to read on this background than black.
bool IsDark(const QColor& background);

/// This colour if it is readable on that background; otherwise made lighter or darker until it is.
QColor ReadableOn(const QColor& background, const QColor& colour);

}  // namespace quarn
