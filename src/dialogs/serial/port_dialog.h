#pragma once

#include <functional>

#include "dialogs/dialog_context.h"
#include "dialogs/serial/port_rules.h"
#include "ui/polled_dialog.h"

class QPushButton;

namespace quarn {

/// Common behaviour of the port dialogs: they are modeless, delete themselves when closed, and do one thing
/// at a time. An operation may run an event loop (a message, the wait for the line); until it ends the tick
/// is paused, a second command is dropped and a close is delayed.
class PortDialog : public PolledDialog {
 public:
  /// Escape acts like the close box.
  void reject() final;

 protected:
  PortDialog(QWidget* owner, const DialogContext& context, const QString& name);

  /// Runs the operation unless one is running. A close requested meanwhile follows it.
  void Perform(const std::function<void()>& operation);
  /// Called every 100 ms while no operation is running.
  virtual void Look() = 0;
  /// Called when the dialog closes: clears its flags.
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
