#include "ui/window_place.h"

#include <QEvent>
#include <QLayout>
#include <QTimerEvent>
#include <QWidget>
#include <QWindow>
#include <utility>

#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kLookMs = 10;
// There is no event for the frame. Some window managers add it long after the window's first paint; if there
// is none by this time, the window has none.
constexpr int kFrameMs = 1000;
constexpr int kLookingMs = 5000;
/// On a scaled desktop a position comes back rounded.
constexpr int kRounding = 2;

}  // namespace

void WindowPlace::Put(std::function<void()> place) {
  m_place = std::move(place);
  m_window.ensurePolished();
  // A later change of the size would look like a move, because of the frame's width.
  if (m_window.layout() != nullptr) m_window.layout()->activate();
  Move();
  m_window.installEventFilter(this);
  if (m_window.isVisible()) StartLooking();
}

void WindowPlace::Move() {
  m_frame = FrameOf(m_window);
  m_place();
  m_at = m_window.pos();
}

void WindowPlace::StartLooking() {
  if (m_window.windowFlags().testFlag(Qt::FramelessWindowHint)) return;
  m_frameDue.setRemainingTime(kFrameMs);
  m_end.setRemainingTime(kLookingMs);
  m_timer.start(kLookMs, this);
}

bool WindowPlace::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &m_window && !event->spontaneous()) {
    if (event->type() == QEvent::Show) StartLooking();
    if (event->type() == QEvent::Hide) m_timer.stop();
  }
  return QObject::eventFilter(watched, event);
}

void WindowPlace::timerEvent(QTimerEvent* event) {
  if (event->timerId() == m_timer.timerId()) Look();
}

void WindowPlace::Look() {
  const QWindow* window = m_window.windowHandle();
  if (window == nullptr) return;
  if (m_frameDue.hasExpired()) TakeForFrameless(m_window);
  const bool asReckoned = FrameOf(m_window) == m_frame;
  if (m_end.hasExpired() || (asReckoned && !window->frameMargins().isNull())) {
    m_timer.stop();
    return;
  }
  if (asReckoned || !IsFrameKnown(m_window)) return;
  // The system reports position and frame one after the other: until they match, wait.
  const QPoint stands = window->framePosition();
  if (m_window.pos() == stands && (stands - m_at).manhattanLength() <= kRounding) Move();
}

void PlacedDialog::setVisible(bool visible) {
  if (visible && !isVisible()) m_place.Put([this] { Place(); });
  QDialog::setVisible(visible);
}

void PlacedDialog::Place() { CenterOnScreen(*this); }

}  // namespace quarn
