#include "ui/box_shown_again_linux.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

namespace quarn {
namespace {

qint64 NowMs() { return QDeadlineTimer::current().deadline(); }

KeyboardIn WhoHas(const QWindow* focused, const QWindow* box) {
  if (focused == nullptr) return KeyboardIn::Elsewhere;
  // The box's own menus and tips.
  if (focused == box || focused->type() == Qt::Popup || focused->type() == Qt::ToolTip)
    return KeyboardIn::Box;
  return KeyboardIn::AnotherWindow;
}

/// The box that is up and can be shown again, or null.
QWidget* BoxUp() {
  QWidget* const box = QApplication::activeModalWidget();
  const bool isUp = box != nullptr && box->isVisible() && box->windowHandle() != nullptr && IsOurs(*box);
  return isUp ? box : nullptr;
}

}  // namespace

void ShowAnew(QWidget& window, QWindow* over) {
  const QPointer<QWidget> focus = window.focusWidget();
  // A dialog's own function would end its event loop.
  window.QWidget::setVisible(false);
  // The system takes note of this when the window is shown.
  if (over != nullptr) window.windowHandle()->setTransientParent(over);
  window.QWidget::setVisible(true);
  if (!focus.isNull()) focus->setFocus();
}

bool IsOurs(const QWidget& modal) { return !modal.testAttribute(Qt::WA_DontShowOnScreen); }

void ShowAgainRule::Show(qint64 nowMs) {
  m_isAwaited = true;
  m_shownAtMs = nowMs;
}

bool ShowAgainRule::Take(KeyboardIn where, qint64 nowMs) {
  if (where == KeyboardIn::Box) m_isAwaited = false;
  if (where != KeyboardIn::AnotherWindow) return false;
  if (m_isAwaited && nowMs - m_shownAtMs < kAnswerMs) return false;
  Show(nowMs);
  return true;
}

ShownAgain::ShownAgain() {
  qApp->installEventFilter(this);
  connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &ShownAgain::Follow);
}

bool ShownAgain::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Show || event->spontaneous()) return false;
  const auto* const window = qobject_cast<const QWidget*>(watched);
  if (window != nullptr && window->isModal()) m_rule.Show(NowMs());
  return false;
}

void ShownAgain::Follow(QWindow* focused) {
  QWidget* const box = BoxUp();
  if (box == nullptr || !m_rule.Take(WhoHas(focused, box->windowHandle()), NowMs())) return;
  // Not inside the change of the focus.
  const auto show = [box = QPointer<QWidget>(box), over = QPointer<QWindow>(focused)] {
    if (!box.isNull() && BoxUp() == box) ShowAnew(*box, over.data());
  };
  QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

}  // namespace quarn
