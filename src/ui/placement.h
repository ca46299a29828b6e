#pragma once

#include <QMargins>
#include <QPoint>
#include <QSize>

class QFont;
class QRect;
class QWidget;

namespace quarn {

// The placement of windows. All sizes are outer sizes, with the frame; `screen` is the whole primary screen,
// not the work area. The calculations are pure; the functions on widgets apply them and keep the size.

/// Centred, but 30 pixels higher so that it looks centred, and never above the screen's top.
QPoint CentredPosition(QSize screen, QSize window);
/// At the given share of the free space to the left and above, truncated towards zero.
QPoint PercentPosition(QSize screen, QSize window, int xPercent, int yPercent);

void CenterOnScreen(QWidget& window);
void PlaceOnScreenByPercent(QWidget& window, int xPercent, int yPercent);

/// The frame that the window manager draws around the window's client area. Until it is known, the frame of
/// another window of ours; if there is none, 8 left and right, 31 above, 8 below, for which the fixed window
/// sizes were designed. Empty for a window without a frame.
QMargins FrameOf(const QWidget& window);
/// Whether FrameOf returns the real frame and not an estimate.
bool IsFrameKnown(const QWidget& window);
/// From now on a frame that is not reported counts as no frame, not as unknown.
void TakeForFrameless(QWidget& window);
/// The window's outer size.
QSize OuterSize(const QWidget& window);

/// Dialog units to pixels for a font: a quarter of its average character's width, an eighth of its height.
QRect MapDialogUnits(const QFont& font, const QRect& units);

}  // namespace quarn
