#pragma once

#include "dialogs/shared_state.h"
#include "ui/polled_dialog.h"

namespace quarn {

/// A window beside the main dialog: modeless, there once, and gone when it is closed. From its making to its
/// closing it is in SharedState::open. Every 100 ms it looks at what the others ask of it, unless it is busy;
/// a request to close that finds it busy or under a box waits for that to be over. What was asked of one that
/// is gone is not meant for the next. User-interface thread only.
class ModelessWindow : public PolledDialog {
 public:
  /// It is wanted again, although it has been told to close and may have begun to.
  void WantAgain();

 protected:
  ModelessWindow(QWidget* owner, SharedState& state, Window window, const QString& name);

  /// Takes what is asked of this window and acts; the request to close comes after it. `ticks`: as in OnTick.
  virtual void Look(int ticks) = 0;
  /// Whether it would find something beside requests.
  [[nodiscard]] virtual bool HasToLook() const { return false; }
  /// Closes because it was asked to.
  virtual void CloseOnRequest() { close(); }
  /// It is closing, and nothing keeps it any longer.
  void MarkClosed();

  [[nodiscard]] SharedState& State() const { return m_state; }
  [[nodiscard]] WindowRequests& Requests() const { return m_state.requests; }
  [[nodiscard]] bool IsRefreshTaken() { return Requests().refresh.Take(m_window); }
  [[nodiscard]] bool IsCloseAsked() const { return Requests().close.Contains(m_window); }

  void OnTick(int ticks) final;
  [[nodiscard]] int QuietTicks() const override;

 private:
  SharedState& m_state;
  const Window m_window;
};

}  // namespace quarn
