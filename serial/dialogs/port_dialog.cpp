#include "serial/dialogs/port_dialog.h"

#include <QCloseEvent>
#include <utility>

#include "ui/control.h"
#include "ui/dialog_button.h"
#include "ui/dialog_grid.h"

namespace quarn {

PortDialog::PortDialog(QWidget* owner, const DialogContext& context, const QString& name)
    : PolledDialog(owner), m_context(context) {
  setObjectName(name);
  setAttribute(Qt::WA_DeleteOnClose);
}

void PortDialog::reject() { close(); }

void PortDialog::Perform(const std::function<void()>& operation) {
  if (m_operations > 0) return;
  ++m_operations;
  operation();
  --m_operations;
  if (std::exchange(m_closeAsked, false)) close();
}

void PortDialog::CloseWhenDone() {
  if (m_operations > 0) {
    m_closeAsked = true;
  } else {
    close();
  }
}

QPushButton* PortDialog::AddButton(const char* name, const QString& text, int controlId,
                                   const std::function<void()>& operation) {
  auto* button = WithControlId(new DialogButton(text, this), controlId);
  button->setObjectName(QLatin1String(name));
  button->setAccessibleName(text);
  button->setMinimumWidth(DialogGrid(*this).Width(DialogGrid::kButtonWidth));
  connect(button, &QPushButton::clicked, this, [this, operation] { Perform(operation); });
  return button;
}

void PortDialog::OnTick(int /*ticks*/) {
  if (m_operations == 0) Look();
}

void PortDialog::closeEvent(QCloseEvent* event) {
  if (m_operations > 0) {
    m_closeAsked = true;
    event->ignore();
    return;
  }
  StopTicks();
  OnClose();
  event->accept();
}

}  // namespace quarn
