#pragma once

#include <QObject>

#include "ui/box_order.h"

class QWidget;
class QWindow;

namespace quarn {

/// Whether the program draws the window: a dialog of the system's stands for one that it cannot reach.
[[nodiscard]] bool IsOurs(const QWidget& modal);

/// Shows a window again that is shown, so that it comes up in front of the others, with the keyboard. Its
/// state and its focus stay; so does the event loop of a dialog. From then on it stands over `over`, if
/// given.
void ShowAnew(QWidget& window, QWindow* over = nullptr);

/// Who has the keyboard while a modal window, the box, is up.
enum class KeyboardIn : unsigned char { Box, AnotherWindow, Elsewhere };

/// Decides when to show the box again: once for each time that another window takes the keyboard. Whenever a
/// box is shown, the window system may first give the keyboard to one more window; that does not count.
class ShowAgainRule {
 public:
  /// How long the window system may take to give the keyboard to a box that is shown.
  static constexpr int kAnswerMs = 1000;

  /// The box is about to be shown. `nowMs` never goes back.
  void Show(qint64 nowMs);
  /// Whether to show the box again.
  [[nodiscard]] bool Take(KeyboardIn where, qint64 nowMs);

 private:
  bool m_isAwaited = false;  ///< shown, and the keyboard has not come since
  qint64 m_shownAtMs = 0;
};

/// For window systems in which a program can neither raise a window nor take the keyboard (Wayland, and
/// sway). A box that is under the window that was clicked on is hidden and shown again: a window that is
/// shown comes up in front, and the system puts it in front of the clicked one from then on. The box's event
/// loop, its state and its focus stay.
class ShownAgain final : public QObject, public ModalOrder {
 public:
  ShownAgain();

  /// `focused` has the keyboard now; null: none of the program's windows.
  void Follow(QWindow* focused);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  ShowAgainRule m_rule;
};

}  // namespace quarn
