#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace quarn {

// Where a dialog of the main dialog's menu comes up. Rectangles and sizes are outer ones, frame included.

/// Under the main dialog's left edge; above it where there is no room below.
QPoint PlaceBelow(const QRect& mainDialog, QSize dialog, QSize screen);

/// Beside the main dialog's top right corner; left of it where there is no room to the right.
QPoint PlaceBeside(const QRect& mainDialog, QSize dialog, QSize screen);

/// Under the main dialog's left edge, and no further down or to the right than the screen goes.
QPoint PlaceUnder(const QRect& mainDialog, QSize dialog, QSize screen);

}  // namespace quarn
