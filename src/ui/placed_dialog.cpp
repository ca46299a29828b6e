#include "ui/placed_dialog.h"

#include "ui/placement.h"

namespace quarn {

void PlacedDialog::setVisible(bool visible) {
  if (visible && !isVisible()) m_place.Put([this] { Place(); });
  QDialog::setVisible(visible);
}

void PlacedDialog::Place() { CenterOnScreen(*this); }

}  // namespace quarn
