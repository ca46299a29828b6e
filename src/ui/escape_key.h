#pragma once

#include <QObject>
#include <QPointer>
#include <QWindow>

namespace quarn {

/// Whether the ESC key is down, from whichever window of the program it was pressed in. A key that is let go
/// while another program has the keyboard tells nobody: the system is asked then, and where it does not say,
/// the key counts as up once no window of ours has the keyboard. Its next repeat tells that it is down still.
/// User-interface thread only; one for the program, gone with the application.
class EscapeKey final : public QObject {
 public:
  static EscapeKey& OfProgram();

  [[nodiscard]] bool IsDown();
  /// Sees keys before every other filter of the application. To be called after a filter has been put there
  /// that swallows keys.
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
