#pragma once

#include <QObject>
#include <QPointer>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>

class QEvent;

namespace quarn {

/// While it holds, windows only paint: keys, clicks, wheel turns and close requests are kept and delivered in
/// order afterwards, and no window timer runs (each fires again at its next interval). Repeats of a held key
/// are dropped, so that they cannot pile up. ESC is noticed wherever in the program the focus is. If it is
/// used to abort, the keys and clicks typed ahead are dropped with it. User-interface thread only.
class InputHold : public QObject {
 public:
  explicit InputHold(QObject* parent = nullptr);
  ~InputHold() override;

  void Begin();
  /// Delivers the held events, as soon as the event loop runs again and before newer input.
  void End();
  [[nodiscard]] bool IsHolding() const { return m_holding; }
  /// Whether one of them holds. What does not come as input, such as the choice of a menu item by an
  /// assistive tool, must look itself: a box that it opened would get no key, no click and no timer, and
  /// would stay.
  [[nodiscard]] static bool IsAnyHolding();
  /// Processes pending events; paints.
  void Pump();
  /// Processes events, at least the pending ones, until `isOver` is true (then true) or `until` comes (then
  /// false). Sleeps in between: what makes `isOver` true must call LookAgain.
  bool WaitUntil(const std::function<bool()>& isOver, std::chrono::steady_clock::time_point until);
  /// Lets WaitUntil ask again. Any thread; keep the hold alive meanwhile.
  void LookAgain();
  /// Holds for `ms` milliseconds. Windows keep painting.
  void HoldFor(int ms);
  /// Whether ESC is down, has been pressed since Begin, or was pressed before and is not delivered yet (after
  /// the key that started this hold).
  [[nodiscard]] bool EscapePressed() const;
  /// ESC aborts the current operation: when the hold ends, only requests to close a window or to end the
  /// program are delivered, and releases of keys and buttons pressed before.
  void UseEscape() { m_escapeUsed = true; }

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  struct Held {
    QPointer<QObject> receiver;
    int type;
    int code;  ///< the key or the button; 0 when there is none
    /// Creates the event again; none if its device is gone. A pointer event must not be copied and kept:
    /// copies share their position with the device, whose next move changes all of them.
    std::function<std::unique_ptr<QEvent>()> make;
  };
  void Keep(QObject* receiver, const QEvent& event);
  void HandOn();
  void DropTypeAhead();

  std::deque<Held> m_held;
  bool m_holding = false;
  bool m_handingOn = false;
  bool m_escapePressed = false;
  bool m_escapeUsed = false;
};

}  // namespace quarn
