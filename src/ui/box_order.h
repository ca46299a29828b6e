#pragma once

#include <memory>

class QWidget;

namespace quarn {

/// While it exists, a modal window (a box, a file dialog, a question of Qt's) stays in front of the program's
/// other windows, whichever of them is clicked on. One for the whole program; make it before any window.
/// User-interface thread only.
class ModalOrder {
 public:
  virtual ~ModalOrder() = default;
};
/// Null where the system does this itself.
[[nodiscard]] std::unique_ptr<ModalOrder> KeepModalInFront();

/// Brings a window that is shown to the front and gives it the keyboard. Where the system refuses this
/// (Wayland, and sway), the window is shown again a moment later, perhaps in another place.
void BringToFront(QWidget& window);

/// Call for a window before it is shown. Where the system places windows, and may put one over its owner, the
/// owner can then come to the front of it.
void LetStandAlone(QWidget& window);

}  // namespace quarn
