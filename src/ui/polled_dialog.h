#pragma once

#include <QBasicTimer>
#include <QDialog>
#include <array>
#include <functional>
#include <utility>

#include "ui/tick_plan.h"
#include "ui/window_place.h"

namespace quarn {

/// A modeless window that checks every 100 ms what other windows request. It skips ticks that have nothing to
/// do, because a wake-up costs more than a tick's work. Everything a tick checks changes either with time or
/// while this thread handles an event, so the next tick is planned again whenever the event loop goes to
/// sleep or wakes. User-interface thread only.
///
/// A request to close (a flag, the close box, the program's end) is delayed while the window is busy or under
/// a box; the window then closes at a later tick. So code that runs an event loop of a box or a wait finds
/// its window still there afterwards.
class PolledDialog : public QDialog {
 public:
  static constexpr int kTickMs = TickPlan::kTickMs;

  /// The window is busy while an object exists: it does something that may run an event loop.
  class Busy {
   public:
    explicit Busy(PolledDialog& window) : m_window(window) { ++m_window.m_busy; }
    ~Busy() { --m_window.m_busy; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    PolledDialog& m_window;
  };

  ~PolledDialog() override;

  /// Cancels a delayed close.
  void WithdrawClose();
  void done(int result) override;
  void setVisible(bool visible) override;
  /// Call before it is shown: `place` moves it to its place, and does so again when its frame is known.
  void Put(std::function<void()> place) { m_place.Put(std::move(place)); }

 protected:
  explicit PolledDialog(QWidget* parent = nullptr);
  void StartTicks();
  void StopTicks();
  /// `ticks`: the number of 100 ms ticks that this call stands for; more than one if some were skipped.
  virtual void OnTick(int ticks) = 0;
  /// How many of the next ticks would have nothing to do, in the current state; TickPlan::kUntilWoken if only
  /// an event can change that. Called often.
  [[nodiscard]] virtual int QuietTicks() const { return 0; }
  [[nodiscard]] bool IsBusy() const { return m_busy > 0; }
  /// Whether a request to close must be delayed.
  [[nodiscard]] bool HasToStay() const;
  /// Closes if a close was delayed and nothing prevents it any more.
  void CloseIfPutOff();
  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void Plan();

  WindowPlace m_place{*this};
  QBasicTimer m_timer;
  TickPlan m_ticks;
  std::optional<std::int64_t> m_timerDue;  ///< the time the timer is set to
  std::int64_t m_planned = 0;              ///< the time of the last plan
  std::array<QMetaObject::Connection, 2> m_connections;
  int m_busy = 0;
  bool m_closeAsked = false;  ///< while the close had to be delayed
};

}  // namespace quarn
