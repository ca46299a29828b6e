#pragma once

#include <QBasicTimer>
#include <QDialog>

namespace quarn {

/// A modeless window that looks every 100 ms at what the others ask of it.
class PolledDialog : public QDialog {
 public:
  static constexpr int kTickMs = 100;

 protected:
  explicit PolledDialog(QWidget* parent = nullptr);
  void StartTicks() { m_timer.start(kTickMs, this); }
  void StopTicks() { m_timer.stop(); }
  virtual void OnTick() = 0;
  void timerEvent(QTimerEvent* event) override;

 private:
  QBasicTimer m_timer;
};

}  // namespace quarn
