#pragma once

#include <QBasicTimer>
#include <QDialog>
#include <array>
#include <functional>
#include <utility>

#include "ui/tick_plan.h"
#include "ui/window_place.h"

namespace quarn {

/// A modeless window that looks every 100 ms at what the others ask of it. Where it can tell that there will
/// be nothing to see, it sleeps over ticks: a wake-up costs more than all that a tick does. Everything a tick
/// looks at changes either with time or while this thread handles an event, so the sleep is planned anew
/// whenever the event loop goes to sleep or wakes. User-interface thread only.
///
/// Whoever asks it to close, by request, by its close box or at the program's end: while it is busy, or while
/// a box stands over it, it stays and closes at a tick after that. Who uses it after an event loop of a box
/// or a wait finds it still there.
class PolledDialog : public QDialog {
 public:
  static constexpr int kTickMs = TickPlan::kTickMs;

  /// The window is busy for as long as one of these lives: it does something that may run an event loop.
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

  /// It is wanted again: a close that has been put off does not follow.
  void WithdrawClose();
  void done(int result) override;
  /// Before it is shown: `place` moves it to where it belongs, and does so again when its frame is known.
  void Put(std::function<void()> place) { m_place.Put(std::move(place)); }

 protected:
  explicit PolledDialog(QWidget* parent = nullptr);
  void StartTicks();
  void StopTicks();
  /// `ticks`: how many of 100 ms this one stands for, more than one after some were slept over.
  virtual void OnTick(int ticks) = 0;
  /// How many of the ticks that follow the last one would find nothing to do, as things stand;
  /// TickPlan::kUntilWoken when only an event can change that. Asked often.
  [[nodiscard]] virtual int QuietTicks() const { return 0; }
  [[nodiscard]] bool IsBusy() const { return m_busy > 0; }
  /// Whether a request to close has to wait.
  [[nodiscard]] bool HasToStay() const;
  /// Closes if that was put off and nothing is in its way any longer.
  void CloseIfPutOff();
  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void Plan();

  WindowPlace m_place{*this};
  QBasicTimer m_timer;
  TickPlan m_ticks;
  std::optional<std::int64_t> m_timerDue;  ///< what the timer is set to
  std::array<QMetaObject::Connection, 2> m_connections;
  int m_busy = 0;
  bool m_closeAsked = false;  ///< while it had to stay
};

}  // namespace quarn
