#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <optional>

#include "ui/box_order.h"
#include "ui/box_shown_again_linux.h"
#include "ui/window_system.h"
#include "ui/x11_linux.h"

namespace quarn {
namespace {

/// A compositor that gives the keyboard to a window does so at once.
constexpr int kRefusedAfterMs = 300;

/// The number of the window that gets the keyboard on X11, if the event is about that.
std::optional<xcb_window_t> WindowWithKeyboard(const QByteArray& eventType, void* message) {
  if (eventType != "xcb_generic_event_t") return std::nullopt;
  if (KindOfEvent(*static_cast<const xcb_generic_event_t*>(message)) != XCB_FOCUS_IN) return std::nullopt;
  return static_cast<const xcb_focus_in_event_t*>(message)->event;
}

/// A window manager knows that a modal window belongs in front of one window. A click on another window of
/// the program brings that one to the front, with the keyboard; Qt hands the keyboard on to the modal window,
/// but some window managers do not raise it for that.
class RaisedOnFocus final : public ModalOrder, public QAbstractNativeEventFilter {
 public:
  RaisedOnFocus() { QCoreApplication::instance()->installNativeEventFilter(this); }

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) override {
    const std::optional<xcb_window_t> focused = WindowWithKeyboard(eventType, message);
    QWidget* const modal = QApplication::activeModalWidget();
    if (!focused || modal == nullptr || !modal->isVisible() || !IsOurs(*modal)) return false;
    if (*focused != modal->winId()) modal->raise();
    return false;
  }
};

/// sway raises no window of X11 for a program. Qt hides that a window behind the modal one has the keyboard,
/// so the events tell.
class ShownAgainOnX11 final : public ModalOrder, public QAbstractNativeEventFilter {
 public:
  ShownAgainOnX11() { QCoreApplication::instance()->installNativeEventFilter(this); }

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) override {
    const std::optional<xcb_window_t> focused = WindowWithKeyboard(eventType, message);
    if (!focused) return false;
    for (QWindow* const window : QGuiApplication::topLevelWindows()) {
      if (window->isVisible() && window->winId() == *focused) m_shown.Follow(window);
    }
    return false;
  }

 private:
  ShownAgain m_shown;
};

}  // namespace

void BringToFront(QWidget& window) {
  window.raise();
  window.activateWindow();
  if (MayPlaceWindows()) return;
  const auto insist = [&window] {
    const QWidget* const modal = QApplication::activeModalWidget();
    const bool isFree = window.isVisible() && (modal == nullptr || modal == &window);
    // sway gives the keyboard to a window of X11 and leaves it where it is.
    const bool isBehind = !window.isActiveWindow() || !IsOnWayland();
    // Nobody has gone to another program in the meantime.
    const bool isWanted = QGuiApplication::focusWindow() != nullptr && isBehind;
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
  if (!MayPlaceWindows()) return std::make_unique<ShownAgainOnX11>();
  return std::make_unique<RaisedOnFocus>();
}

}  // namespace quarn
