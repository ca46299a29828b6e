#pragma once

#include <functional>

#include "dialogs/dialog_context.h"
#include "dialogs/modeless_window.h"
#include "dialogs/serial/port_rules.h"

class QPushButton;

namespace quarn {

/// What the port dialogs have in common: they do one thing at a time. It may run an event loop (a message,
/// the wait for the line); until it is over a second command is dropped.
class PortDialog : public ModelessWindow {
 public:
  /// Escape acts like the close box.
  void reject() final;

 protected:
  PortDialog(QWidget* owner, const DialogContext& context, Window window, const QString& name);

  /// Runs the operation unless one is running. A close requested meanwhile follows it.
  void Perform(const std::function<void()>& operation);
  QPushButton* AddButton(const char* name, const QString& text, int controlId,
                         const std::function<void()>& operation);
  [[nodiscard]] PortSituation Situation() const { return SituationOf(m_context.state, m_context.connection); }
  [[nodiscard]] const DialogContext& Context() const { return m_context; }

  void closeEvent(QCloseEvent* event) final;

 private:
  const DialogContext m_context;
};

}  // namespace quarn
