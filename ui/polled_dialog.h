#pragma once

#include <QBasicTimer>
#include <QDialog>
#include <array>

#include "ui/tick_plan.h"

namespace quarn {

/// A modeless window that looks every 100 ms at what the others ask of it. Where it can tell that there will
/// be nothing to see, it sleeps over ticks: a wake-up costs more than all that a tick does. Everything a tick
/// looks at changes either with time or while this thread handles an event, so the sleep is planned anew
/// whenever the event loop goes to sleep or wakes. User-interface thread only.
class PolledDialog : public QDialog {
 public:
  static constexpr int kTickMs = TickPlan::kTickMs;

  ~PolledDialog() override;

 protected:
  explicit PolledDialog(QWidget* parent = nullptr);
  void StartTicks();
  void StopTicks();
  /// `ticks`: how many of 100 ms this one stands for, more than one after some were slept over.
  virtual void OnTick(int ticks) = 0;
  /// How many of the ticks that follow the last one would find nothing to do, as things stand;
  /// TickPlan::kUntilWoken when only an event can change that. Asked often.
  [[nodiscard]] virtual int QuietTicks() const { return 0; }
  void timerEvent(QTimerEvent* event) override;

 private:
  void Plan();

  QBasicTimer m_timer;
  TickPlan m_ticks;
  std::optional<std::int64_t> m_timerDue;  ///< what the timer is set to
  std::array<QMetaObject::Connection, 2> m_connections;
};

}  // namespace quarn
