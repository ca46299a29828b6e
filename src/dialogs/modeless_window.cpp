#include "dialogs/modeless_window.h"

namespace quarn {

ModelessWindow::ModelessWindow(QWidget* owner, SharedState& state, Window window, const QString& name)
    : PolledDialog(owner), m_state(state), m_window(window) {
  setObjectName(name);
  setAttribute(Qt::WA_DeleteOnClose);
  m_state.open.Add(m_window);
  Requests().close.Remove(m_window);
}

void ModelessWindow::WantAgain() {
  WithdrawClose();
  m_state.open.Add(m_window);
  Requests().close.Remove(m_window);
}

void ModelessWindow::MarkClosed() {
  StopTicks();
  m_state.open.Remove(m_window);
  Requests().close.Remove(m_window);
}

void ModelessWindow::OnTick(int ticks) {
  // A message of this window is up, or a transaction is under way: everything waits until it is over.
  if (IsBusy()) return;
  Look(ticks);
  if (!HasToStay() && Requests().close.Take(m_window)) CloseOnRequest();
}

int ModelessWindow::QuietTicks() const {
  return Requests().IsAnythingFor(m_window) || HasToLook() ? 0 : TickPlan::kUntilWoken;
}

}  // namespace quarn
