#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QWidget>
#include <QWindow>

#include "ui/box_order.h"
#include "ui/box_shown_again_linux.h"
#include "ui/x11_linux.h"

namespace quarn {
namespace {

/// A window manager knows that a modal window belongs in front of one window. A click on another window of
/// the program brings that one to the front, with the keyboard; Qt hands the keyboard on to the modal window,
/// but some window managers do not raise it for that.
class RaisedOnFocus final : public ModalOrder, public QAbstractNativeEventFilter {
 public:
  RaisedOnFocus() { QCoreApplication::instance()->installNativeEventFilter(this); }

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) override {
    if (eventType != "xcb_generic_event_t") return false;
    if (KindOfEvent(*static_cast<const xcb_generic_event_t*>(message)) != XCB_FOCUS_IN) return false;
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal == nullptr || !modal->isVisible() || !IsOurs(*modal)) return false;
    if (static_cast<const xcb_focus_in_event_t*>(message)->event != modal->winId()) modal->raise();
    return false;
  }
};

bool IsOnWayland() { return QGuiApplication::platformName().startsWith(u"wayland"); }

}  // namespace

void LetStandAlone(QWidget& window) {
  if (!IsOnWayland()) return;
  window.winId();  // makes its QWindow
  window.windowHandle()->setTransientParent(nullptr);
}

std::unique_ptr<ModalOrder> KeepModalInFront() {
  if (IsOnWayland()) return std::make_unique<ShownAgain>();
  return std::make_unique<RaisedOnFocus>();
}

}  // namespace quarn
