#pragma once

#include <QRect>

class QWidget;

namespace quarn {

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

 private:
  const QWidget& m_window;
};

}  // namespace quarn
