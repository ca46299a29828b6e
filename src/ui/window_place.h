#pragma once

#include <QBasicTimer>
#include <QDeadlineTimer>
#include <QDialog>
#include <QMargins>
#include <QObject>
#include <QPoint>
#include <functional>

class QWidget;

namespace quarn {

/// Places a window: before it is shown, so that it does not appear elsewhere first, with the frame size of
/// our other windows; and again when its own frame turns out to be different, unless the user has moved the
/// window. Belongs to its window. User-interface thread only.
class WindowPlace final : public QObject {
 public:
  explicit WindowPlace(QWidget& window) : m_window(window) {}

  /// `place` moves the window, whose size is final by then, using the frame that FrameOf returns at that
  /// time.
  void Put(std::function<void()> place);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void Move();
  void StartLooking();
  void Look();

  QWidget& m_window;
  std::function<void()> m_place;
  QPoint m_at;       ///< the position it was given
  QMargins m_frame;  ///< the frame assumed for it
  QBasicTimer m_timer;
  QDeadlineTimer m_frameDue;
  QDeadlineTimer m_end;
};

/// A dialog that is placed each time it is shown: centred on the screen, unless a subclass places it
/// elsewhere.
class PlacedDialog : public QDialog {
 public:
  void setVisible(bool visible) override;

 protected:
  using QDialog::QDialog;
  virtual void Place();

 private:
  WindowPlace m_place{*this};
};

}  // namespace quarn
