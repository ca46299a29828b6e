#include "dialogs/serial/port_dialog.h"

#include <QCloseEvent>

#include "ui/controls.h"
#include "ui/placement.h"

namespace quarn {

PortDialog::PortDialog(QWidget* owner, const DialogContext& context, Window window, const QString& name)
    : ModelessWindow(owner, context.state, window, name), m_context(context) {}

void PortDialog::reject() { close(); }

void PortDialog::Perform(const std::function<void()>& operation) {
  if (IsBusy()) return;
  {
    const Busy busy(*this);
    operation();
  }
  CloseIfPutOff();
}

QPushButton* PortDialog::AddButton(const char* name, const QString& text, int controlId,
                                   const std::function<void()>& operation) {
  auto* button = WithControlId(new DialogButton(text, this), controlId);
  button->setObjectName(QLatin1String(name));
  button->setAccessibleName(text);
  button->setMinimumWidth(DialogGrid(*this).WholeWidth(DialogGrid::kButtonWidth));
  connect(button, &QPushButton::clicked, this, [this, operation] { Perform(operation); });
  return button;
}

void PortDialog::closeEvent(QCloseEvent* event) {
  MarkClosed();
  event->accept();
}

}  // namespace quarn
