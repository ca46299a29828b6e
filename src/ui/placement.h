#pragma once

#include <QMargins>
#include <QPoint>
#include <QSize>

class QFont;
class QRect;
class QWidget;

namespace quarn {

// Where a window goes. All sizes are outer sizes, frame included; `screen` is the whole primary screen,
// not the work area. The calculations are pure; the functions on widgets apply them and keep the size.

/// Centred, 30 pixels above the middle so that it looks centred, and never above the screen's top.
QPoint CentredPosition(QSize screen, QSize window);
/// The given share of the free space to the left and above, truncated towards zero.
QPoint PercentPosition(QSize screen, QSize window, int xPercent, int yPercent);

void CenterOnScreen(QWidget& window);
void PlaceOnScreenByPercent(QWidget& window, int xPercent, int yPercent);

/// What the window manager puts around the window's client area. Until it is known: what another window of
/// ours has; before there is one 8 left and right, 31 above, 8 below, the frame for which the fixed window
/// sizes were chosen. Nothing around a window that asks for no frame.
QMargins FrameOf(const QWidget& window);
/// Whether FrameOf is no guess.
bool IsFrameKnown(const QWidget& window);
/// From now on a frame that is not reported counts as none, and not as unknown.
void TakeForFrameless(QWidget& window);
/// The window's outer size.
QSize OuterSize(const QWidget& window);

/// Dialog units to pixels for a font: a quarter of its average character's width, an eighth of its height.
QRect MapDialogUnits(const QFont& font, const QRect& units);

}  // namespace quarn
