#pragma once

#include <QObject>
#include <QPointer>
#include <deque>
#include <functional>
#include <memory>

class QEvent;

namespace quarn {

/// While it holds, windows paint but nothing else happens in them: keys, clicks, wheel turns and close
/// requests are kept and handed on in their order afterwards, and no timer of a window runs (each comes
/// again at its next interval). The repeats of a key that is held down are dropped, so that they cannot
/// pile up. ESC is noticed, wherever in the program the focus is. Where it is taken as the wish to stop, what
/// was typed and clicked ahead is dropped with it. User-interface thread only.
class InputHold : public QObject {
 public:
  explicit InputHold(QObject* parent = nullptr);
  ~InputHold() override;

  void Begin();
  /// Hands on what was held, as soon as the event loop runs again and before any newer input.
  void End();
  [[nodiscard]] bool IsHolding() const { return m_holding; }
  /// Handles what has arrived; paints.
  void Pump();
  /// Whether ESC is down, has been pressed since Begin, or was pressed before and is still to be handed on:
  /// behind the key that began this hold.
  [[nodiscard]] bool EscapePressed() const;
  /// The ESC that was noticed ends what is going on: of all that is held when the hold ends, only requests to
  /// close a window or to end the program are handed on, and releases of what was pressed before.
  void UseEscape() { m_escapeUsed = true; }

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  struct Held {
    QPointer<QObject> receiver;
    int type;
    int code;  ///< the key or the button; 0 when there is none
    /// Makes the event anew. A pointer event must not be copied and kept: copies share their position
    /// with the device, whose next move changes them all.
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
