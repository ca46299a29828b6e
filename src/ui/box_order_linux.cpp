#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include "ui/box_order.h"
#include "ui/box_shown_again_linux.h"
#include "ui/window_system.h"
#include "ui/x11_linux.h"

namespace quarn {
namespace {

/// A compositor that gives the keyboard to a window does so at once.
constexpr int kRefusedAfterMs = 300;

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

}  // namespace

void BringToFront(QWidget& window) {
  window.raise();
  window.activateWindow();
  if (!IsOnWayland()) return;
  const auto insist = [&window] {
    const QWidget* const modal = QApplication::activeModalWidget();
    const bool isFree = window.isVisible() && (modal == nullptr || modal == &window);
    // Nobody has gone to another program in the meantime.
    const bool isWanted = QGuiApplication::focusWindow() != nullptr && !window.isActiveWindow();
    if (isFree && isWanted) ShowAnew(window);
  };
  QTimer::singleShot(kRefusedAfterMs, &window, insist);
}

void LetStandAlone(QWidget& window) {
  if (MayPlaceWindows()) return;
  window.winId();  // makes its QWindow
  window.windowHandle()->setTransientParent(nullptr);
}

std::unique_ptr<ModalOrder> KeepModalInFront() {
  if (IsOnWayland()) return std::make_unique<ShownAgain>();
  return std::make_unique<RaisedOnFocus>();
}

}  // namespace quarn
