#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace quarn {

// The places of the dialogs in the main dialog's menu. Rectangles and sizes include the frame.

/// Under the main dialog's left edge; above it if there is no room below.
QPoint PlaceBelowOrAbove(const QRect& mainDialog, QSize dialog, QSize screen);

/// Beside the main dialog's top right corner; left of it if there is no room to the right.
QPoint PlaceBeside(const QRect& mainDialog, QSize dialog, QSize screen);

/// Under the main dialog's left edge, but within the screen at the bottom and on the right.
QPoint PlaceBelowOnScreen(const QRect& mainDialog, QSize dialog, QSize screen);

}  // namespace quarn
