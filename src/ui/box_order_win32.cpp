#include "ui/box_order.h"

namespace quarn {

// The system does not raise a window that is under a box.
std::unique_ptr<ModalOrder> KeepModalInFront() { return nullptr; }

void LetStandAlone(QWidget& /*window*/) {}

}  // namespace quarn
