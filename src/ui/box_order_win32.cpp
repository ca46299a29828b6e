#include "ui/box_order.h"

#include <QWidget>

namespace quarn {

// The system does not raise a window that is under a box.
std::unique_ptr<ModalOrder> KeepModalInFront() { return nullptr; }

void BringToFront(QWidget& window) {
  window.raise();
  window.activateWindow();
}

void LetStandAlone(QWidget& /*window*/) {}

}  // namespace quarn
