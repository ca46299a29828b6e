#pragma once

#include <functional>

#include "dialogs/dialog_context.h"
#include "dialogs/serial/port_rules.h"
#include "ui/polled_dialog.h"

class QPushButton;

namespace quarn {

/// What the port dialogs have in common: they are modeless, delete themselves when closed, and do one thing
/// at a time. What they do may run an event loop (a message, the wait for the line); until it is over their
/// tick rests, a second command is dropped and a close is put off.
class PortDialog : public PolledDialog {
 public:
  /// Escape is the close box.
  void reject() final;

 protected:
  PortDialog(QWidget* owner, const DialogContext& context, const QString& name);

  /// Runs the operation unless one is under way. A close that was asked for meanwhile follows it.
  void Perform(const std::function<void()>& operation);
  /// Every 100 ms while no operation is under way.
  virtual void Look() = 0;
  /// The dialog closes: its flags fall.
  virtual void OnClose() = 0;

  QPushButton* AddButton(const char* name, const QString& text, int controlId,
                         const std::function<void()>& operation);
  [[nodiscard]] PortSituation Situation() const { return SituationOf(m_context.state, m_context.connection); }
  [[nodiscard]] const DialogContext& Context() const { return m_context; }
  [[nodiscard]] WindowRequests& Requests() const { return m_context.state.requests; }

  void OnTick(int ticks) final;
  void closeEvent(QCloseEvent* event) final;

 private:
  const DialogContext m_context;
};

}  // namespace quarn
