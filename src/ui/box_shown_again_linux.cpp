#include "ui/box_shown_again_linux.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace quarn {
namespace {

qint64 Now() { return QDeadlineTimer::current().deadline(); }

KeyboardIn WhoHas(const QWindow* focused, const QWindow* box) {
  if (focused == nullptr) return KeyboardIn::Elsewhere;
  // The box's own menus and tips.
  if (focused == box || focused->type() == Qt::Popup || focused->type() == Qt::ToolTip)
    return KeyboardIn::Box;
  return KeyboardIn::AnotherWindow;
}

}  // namespace

bool ShowAgainRule::Take(KeyboardIn where, qint64 nowMs) {
  if (where == KeyboardIn::Box) m_isAwaited = false;
  if (where != KeyboardIn::AnotherWindow) return false;
  if (m_isAwaited && nowMs - m_shownAtMs < kAnswerMs) return false;
  m_isAwaited = true;
  m_shownAtMs = nowMs;
  return true;
}

ShownAgain::ShownAgain(QWidget& box) : m_box(&box), m_rule(Now()) {
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &ShownAgain::Follow);
}

void ShownAgain::Follow(QWindow* focused) {
  const QWidget* const box = m_box.data();
  if (box == nullptr || !box->isVisible() || box->windowHandle() == nullptr) return;
  // A box over this one has an order of its own.
  if (QGuiApplication::modalWindow() != box->windowHandle()) return;
  if (!m_rule.Take(WhoHas(focused, box->windowHandle()), Now())) return;
  // Not inside the change of the focus.
  const auto show = [this, over = QPointer<QWindow>(focused)] { ShowOver(over.data()); };
  QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

void ShownAgain::ShowOver(QWindow* focused) {
  QWidget* const box = m_box.data();
  if (box == nullptr || !box->isVisible() || QGuiApplication::modalWindow() != box->windowHandle()) return;
  const QPointer<QWidget> focus = box->focusWidget();
  // A dialog's own function would end its event loop.
  box->QWidget::setVisible(false);
  // The system takes note of this when the window is shown.
  if (focused != nullptr) box->windowHandle()->setTransientParent(focused);
  box->QWidget::setVisible(true);
  if (!focus.isNull()) focus->setFocus();
}

}  // namespace quarn
