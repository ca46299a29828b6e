#pragma once

#include <QPointer>
#include <QWidget>
#include <vector>

class QDialog;

namespace quarn {

// Boxes: windows over the program's windows with an event loop of their own (messages, questions, the about
// box, file dialogs). Any window may be asked to close in that loop, so a box has no parent. It stays in
// front of the window that was active when it opened, and outlives it. User-interface thread only.

/// The window over which a new box is shown: the active one, or else a visible one. Null if there is none.
[[nodiscard]] QWidget* WindowForBox();

/// Shows the box, which has no parent, over WindowForBox and returns its result when it is closed. Until then
/// no other window of the program accepts input. Afterwards the window under it has the keyboard focus, if it
/// still exists.
int RunBox(QDialog& box);

/// While it exists, marks `window` (may be null), and the windows to which it belongs or over which it is
/// shown, as being under a box.
class BoxOver {
 public:
  explicit BoxOver(QWidget* window);
  ~BoxOver();
  BoxOver(const BoxOver&) = delete;
  BoxOver& operator=(const BoxOver&) = delete;

  /// Whether this window is under a box.
  [[nodiscard]] static bool IsOver(const QWidget& window);

 private:
  std::vector<QPointer<QWidget>> m_below;
};

}  // namespace quarn
