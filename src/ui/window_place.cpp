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
// Nothing tells of the frame's coming. Some window managers put it there long after the window's first paint;
// one that has put none until then has none.
constexpr int kFrameMs = 1000;
constexpr int kLookingMs = 5000;
/// With a desktop that scales, a place comes back rounded.
constexpr int kRounding = 2;

}  // namespace

void WindowPlace::Put(std::function<void()> place) {
  m_place = std::move(place);
  m_window.ensurePolished();
  // A size that changes later would be taken for a move, by the frame's width.
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
  // Its place and its frame come from the system one after the other: until they fit, there is nothing to
  // see.
  const QPoint stands = window->framePosition();
  if (m_window.pos() == stands && (stands - m_at).manhattanLength() <= kRounding) Move();
}

}  // namespace quarn
