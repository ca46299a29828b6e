#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>

namespace quarn {

/// Whether the ESC key is down, in whichever window of the program it was pressed. If the key is released
/// while another program has the keyboard, no event arrives: then the system is asked. If it cannot say, the
/// key counts as up once no window of ours has the keyboard; its next repeat shows that it is still down.
/// User-interface thread only; one per program, deleted with the application.
class EscapeKey final : public QObject {
 public:
  static EscapeKey& OfProgram();

  [[nodiscard]] bool IsDown();
  /// Makes it see keys before all other filters of the application. Call this after installing a filter that
  /// swallows keys.
  void StayInFront();

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  EscapeKey();

  bool m_down = false;
  quint32 m_scanCode = 0;
  QPointer<QWindow> m_focus;  ///< which of our windows had the keyboard last
};

}  // namespace quarn
