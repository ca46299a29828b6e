#include "ui/box.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QTimer>
#include <QWindow>
#include <algorithm>

namespace quarn {
namespace {

std::vector<const BoxOver*>& BoxesUp() {
  static std::vector<const BoxOver*> boxes;
  return boxes;
}

/// A window under a box is one in which the user works, not a popup.
bool IsPlainWindow(const QWidget& window) {
  return window.isVisible() && (window.windowType() == Qt::Dialog || window.windowType() == Qt::Window);
}

/// Makes the window system keep a box in front of a window (may be null), which may be deleted before the
/// box: a QWindow forgets its transient parent when that is deleted, and first detaches from it in the
/// system. This happens when the box has its window and is not shown yet. Creating that window earlier would
/// place the box as if it had no frame.
class InFrontOf final : public QObject {
 public:
  InFrontOf(QWidget& box, QWidget* window) : m_window(window) { box.installEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    const auto& box = static_cast<const QWidget&>(*watched);
    QWidget* const window = m_window.data();
    if (event->type() == QEvent::WinIdChange && window != nullptr && box.windowHandle() != nullptr) {
      box.windowHandle()->setTransientParent(window->windowHandle());
    }
    return false;
  }

 private:
  QPointer<QWidget> m_window;
};

/// The usual cursor while it exists, if the hourglass is shown.
class UsualCursor {
 public:
  UsualCursor() {
    if (m_waits) QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
  }
  ~UsualCursor() {
    if (m_waits) QGuiApplication::restoreOverrideCursor();
  }
  UsualCursor(const UsualCursor&) = delete;
  UsualCursor& operator=(const UsualCursor&) = delete;

 private:
  const bool m_waits = QGuiApplication::overrideCursor() != nullptr;
};

/// Records whether a box had the keyboard when it closed.
class LastLook final : public QObject {
 public:
  explicit LastLook(QWidget& box) { box.installEventFilter(this); }
  [[nodiscard]] bool WasActive() const { return m_wasActive; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    const auto& box = static_cast<const QWidget&>(*watched);
    // Some systems remove the keyboard focus before the widget is notified, others after.
    if (event->type() == QEvent::WindowDeactivate && box.isHidden()) m_wasActive = true;
    if (event->type() == QEvent::Hide && box.isActiveWindow()) m_wasActive = true;
    return false;
  }

 private:
  bool m_wasActive = false;
};

/// Gives the keyboard back to the window that was under a box. A window manager of X11 chooses a window
/// itself when it sees the box go, and may do so after it has been asked: so it is asked after its choice.
class KeyboardReturn final : public QObject {
 public:
  explicit KeyboardReturn(QWidget& window) : QObject(&window) {
    if (QGuiApplication::platformName() != u"xcb") {
      window.activateWindow();
      deleteLater();
      return;
    }
    QWindowList others = QGuiApplication::topLevelWindows();
    others.removeIf([&](const QWindow* each) { return !each->isVisible() || each == window.windowHandle(); });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this, &window, others](QWindow* focused) {
      if (focused == nullptr) return;
      if (others.contains(focused)) window.activateWindow();
      // Whatever comes then is what the person wants.
      disconnect(qGuiApp, nullptr, this, nullptr);
      deleteLater();
    });
    QTimer::singleShot(kChoiceMs, this, [this, &window] {
      if (QGuiApplication::focusWindow() == nullptr) window.activateWindow();
      deleteLater();
    });
  }

 private:
  static constexpr int kChoiceMs = 50;
};

}  // namespace

QWidget* WindowForBox() {
  if (QWidget* active = QApplication::activeWindow()) return active;
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  const QWidgetList windows = QApplication::topLevelWidgets();
  // The top window, so that the box is in front of all of them.
  for (const bool belongsToNobody : {true, false}) {
    const auto found = std::find_if(windows.begin(), windows.end(), [belongsToNobody](const QWidget* each) {
      return IsPlainWindow(*each) && (each->parentWidget() == nullptr) == belongsToNobody;
    });
    if (found != windows.end()) return *found;
  }
  return nullptr;
}

int RunBox(QDialog& box) {
  QWidget* const window = WindowForBox();
  const QPointer<QWidget> below = window;
  const BoxOver over(window);
  const InFrontOf inFront(box, window);
  const LastLook look(box);
  const UsualCursor cursor;
  const int result = box.exec();
  // Not every system returns the keyboard focus automatically.
  QWidget* const left = below.data();
  if (look.WasActive() && left != nullptr && left->isVisible()) new KeyboardReturn(*left);
  return result;
}

BoxOver::BoxOver(QWidget* window) {
  for (QWidget* each = window; each != nullptr; each = each->parentWidget())
    m_below.emplace_back(each->window());
  // The active window may be a box itself, which has no parent.
  for (const BoxOver* earlier : BoxesUp())
    m_below.insert(m_below.end(), earlier->m_below.begin(), earlier->m_below.end());
  BoxesUp().push_back(this);
}

BoxOver::~BoxOver() { std::erase(BoxesUp(), this); }

bool BoxOver::IsOver(const QWidget& window) {
  const auto stands = [&window](const BoxOver* box) {
    return std::find(box->m_below.begin(), box->m_below.end(), &window) != box->m_below.end();
  };
  return std::any_of(BoxesUp().begin(), BoxesUp().end(), stands);
}

}  // namespace quarn
