#include "ui/escape_key.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include "ui/key_state.h"

namespace quarn {

EscapeKey& EscapeKey::OfProgram() {
  static QPointer<EscapeKey> key;
  if (key.isNull()) key = new EscapeKey;
  return *key;
}

EscapeKey::EscapeKey() : QObject(QCoreApplication::instance()), m_focus(QGuiApplication::focusWindow()) {
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
    // There is no event when the window that had the keyboard is deleted.
    if (window == nullptr || m_focus.isNull()) m_down = false;
    m_focus = window;
  });
  StayInFront();
}

bool EscapeKey::IsDown() {
  if (!m_down || QGuiApplication::focusWindow() == nullptr) return false;
  // It may have been released while another program had the keyboard for a moment.
  m_down = IsKeyDown(m_scanCode).value_or(true);
  return m_down;
}

void EscapeKey::StayInFront() { QCoreApplication::instance()->installEventFilter(this); }

bool EscapeKey::eventFilter(QObject* receiver, QEvent* event) {
  const bool pressed = event->type() == QEvent::KeyPress;
  if ((!pressed && event->type() != QEvent::KeyRelease) || !receiver->isWindowType()) return false;
  // Held events that are delivered now say nothing about the key's present state.
  if (!event->spontaneous()) return false;
  const auto& key = static_cast<const QKeyEvent&>(*event);
  // Some systems report a repeat as a release and a press.
  if (key.key() != Qt::Key_Escape || (!pressed && key.isAutoRepeat())) return false;
  m_down = pressed;
  m_scanCode = key.nativeScanCode();
  return false;
}

}  // namespace quarn
