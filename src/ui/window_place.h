#pragma once

#include <QBasicTimer>
#include <QDeadlineTimer>
#include <QMargins>
#include <QObject>
#include <QPoint>
#include <functional>

class QWidget;

namespace quarn {

/// Puts a window where it belongs: before it is shown, so that it does not appear elsewhere first, by the
/// frame that other windows of ours have; and again when its own frame turns out to be another, unless
/// somebody has moved the window meanwhile. Belongs to its window. User-interface thread only.
class WindowPlace final : public QObject {
 public:
  explicit WindowPlace(QWidget& window) : m_window(window) {}

  /// `place` moves the window, whose size is final by then, to where it belongs with the frame that FrameOf
  /// tells at the time.
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
  QPoint m_at;       ///< where it has been put
  QMargins m_frame;  ///< with which frame in mind
  QBasicTimer m_timer;
  QDeadlineTimer m_frameDue;
  QDeadlineTimer m_end;
};

}  // namespace quarn
