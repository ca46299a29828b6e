#include "ui/placed_dialog.h"

#include <QEvent>
#include <QLayout>
#include <QWindow>

#include "ui/placement.h"

namespace quarn {

void PlacedDialog::setVisible(bool visible) {
  const bool appears = visible && !isVisible();
  if (appears) {
    ensurePolished();
    if (layout() != nullptr) layout()->activate();
    // Before it is shown, so that it does not appear elsewhere first; and again as soon as the window
    // manager has put its frame around it, whose size was a guess until then.
    Place();
  }
  QDialog::setVisible(visible);
  if (!appears || windowHandle() == nullptr) return;
  if (windowHandle()->isExposed()) {
    Place();
  } else {
    windowHandle()->installEventFilter(this);
  }
}

void PlacedDialog::Place() { CenterOnScreen(*this); }

bool PlacedDialog::eventFilter(QObject* watched, QEvent* event) {
  if (watched == windowHandle() && event->type() == QEvent::Expose) {
    watched->removeEventFilter(this);
    Place();
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace quarn
