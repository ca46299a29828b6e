#pragma once

#include <QObject>
#include <QPointer>
#include <memory>

#include "ui/box_order.h"

class QWidget;
class QWindow;

namespace quarn {

/// Who has the keyboard while a box is up.
enum class KeyboardIn : unsigned char { Box, AnotherWindow, Elsewhere };

/// Decides when to show a box again: once for each time that another window takes the keyboard. Whenever a
/// box is shown, the window system may first give the keyboard to one more window; that does not count.
class ShowAgainRule {
 public:
  /// How long the window system may take to give the keyboard to a box that is shown.
  static constexpr int kAnswerMs = 1000;

  /// The box is about to be shown. `nowMs` never goes back.
  explicit ShowAgainRule(qint64 nowMs) : m_shownAtMs(nowMs) {}
  /// Whether to show the box again.
  [[nodiscard]] bool Take(KeyboardIn where, qint64 nowMs);

 private:
  bool m_isAwaited = true;  ///< shown, and the keyboard has not come since
  qint64 m_shownAtMs;
};

/// For window systems in which a program can neither raise a window nor take the keyboard (Wayland). A box
/// that is under the window that was clicked on is hidden and shown again: a window that is shown comes up in
/// front, and the system puts it in front of the clicked one from then on. The box's event loop, its state
/// and its focus stay.
class ShownAgain final : public QObject, public BoxOrder {
 public:
  explicit ShownAgain(QWidget& box);

 private:
  void Follow(QWindow* focused);
  void ShowOver(QWindow* focused);

  QPointer<QWidget> m_box;
  ShowAgainRule m_rule;
};

}  // namespace quarn
