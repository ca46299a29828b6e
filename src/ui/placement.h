#pragma once

#include <QList>
#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QSize>

class QFont;
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
/// another window of ours, or the one that the window manager announces; if there is none, 8 left and right,
/// 31 above, 8 below, for which the fixed window sizes were designed. Empty for a window without a frame.
QMargins FrameOf(const QWidget& window);
/// Asks the window manager for the frame that it announces. Without an answer the first FrameOf asks again.
void LearnUsualFrame();
/// Whether FrameOf returns the real frame and not an estimate.
bool IsFrameKnown(const QWidget& window);
/// From now on a frame that is not reported counts as no frame, not as unknown.
void TakeForFrameless(QWidget& window);
/// The window's outer size.
QSize OuterSize(const QWidget& window);

// The places of the dialogs in the main dialog's menu. Rectangles and sizes include the frame.

/// Under the main dialog's left edge; above it if there is no room below.
QPoint PlaceBelowOrAbove(const QRect& mainDialog, QSize dialog, QSize screen);

/// Beside the main dialog's top right corner; left of it if there is no room to the right.
QPoint PlaceBeside(const QRect& mainDialog, QSize dialog, QSize screen);

/// For a dialog without a fixed place: under the main dialog's left edge; if it would cover one of `others`,
/// where it covers the least of the main dialog and of them, beside or below one of these. Always within the
/// screen.
QPoint PlaceOffOthers(const QRect& mainDialog, const QList<QRect>& others, QSize dialog, QSize screen);

/// Dialog units to pixels for a font: a quarter of its average character's width, an eighth of its height.
QRect MapDialogUnits(const QFont& font, const QRect& units);

/// The common measurements of the dialogs: dialog units of the window's font, and standard distances. Input
/// in units, results in pixels.
class DialogGrid {
 public:
  static constexpr int kMargin = 10;
  static constexpr int kGap = 4;         ///< between controls that belong together
  static constexpr int kGroupGap = 10;   ///< between groups
  static constexpr int kRowHeight = 14;  ///< of a row of buttons or fields
  static constexpr int kButtonWidth = 50;

  explicit DialogGrid(const QWidget& window) : m_window(window) {}
  [[nodiscard]] int Width(int units) const;
  [[nodiscard]] int Height(int units) const;
  /// For controls: whole pixels of the screen as well.
  [[nodiscard]] int WholeWidth(int units) const;
  [[nodiscard]] int WholeHeight(int units) const;

 private:
  const QWidget& m_window;
};

}  // namespace quarn
