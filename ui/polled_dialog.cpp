#include "ui/polled_dialog.h"

#include <QTimerEvent>

namespace quarn {

PolledDialog::PolledDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                          Qt::WindowCloseButtonHint) {}

void PolledDialog::timerEvent(QTimerEvent* event) {
  if (event->timerId() == m_timer.timerId()) {
    OnTick();
  } else {
    QDialog::timerEvent(event);
  }
}

}  // namespace quarn
