#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include "ui/box_order.h"
#include "ui/box_shown_again_linux.h"
#include "ui/x11_linux.h"

namespace quarn {
namespace {

/// A window manager knows that the box belongs in front of one window. A click on another window of the
/// program brings that one to the front, with the keyboard; Qt hands the keyboard on to the box, but some
/// window managers do not raise it for that.
class RaisedOnFocus final : public BoxOrder, public QAbstractNativeEventFilter {
 public:
  explicit RaisedOnFocus(QWidget& box) : m_box(&box) {
    QCoreApplication::instance()->installNativeEventFilter(this);
  }

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) override {
    QWidget* const box = m_box.data();
    if (eventType != "xcb_generic_event_t" || box == nullptr || !box->isVisible()) return false;
    if (KindOfEvent(*static_cast<const xcb_generic_event_t*>(message)) != XCB_FOCUS_IN) return false;
    if (static_cast<const xcb_focus_in_event_t*>(message)->event != box->winId()) box->raise();
    return false;
  }

 private:
  QPointer<QWidget> m_box;
};

bool IsOnWayland() { return QGuiApplication::platformName().startsWith(u"wayland"); }

}  // namespace

void LetStandAlone(QWidget& window) {
  if (!IsOnWayland()) return;
  window.winId();  // makes its QWindow
  window.windowHandle()->setTransientParent(nullptr);
}

std::unique_ptr<BoxOrder> KeepInFront(QWidget& box) {
  if (IsOnWayland()) return std::make_unique<ShownAgain>(box);
  return std::make_unique<RaisedOnFocus>(box);
}

}  // namespace quarn
