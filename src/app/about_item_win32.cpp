#include <windows.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QWidget>
#include <utility>

#include "app/about_item.h"

namespace quarn {
namespace {

constexpr UINT kItemId = 16;  // the lowest four bits of a system command belong to the system

class SystemMenuItem final : public QObject, public QAbstractNativeEventFilter {
 public:
  SystemMenuItem(QWidget& window, std::function<void()> chosen)
      : QObject(&window), m_window(reinterpret_cast<HWND>(window.winId())), m_chosen(std::move(chosen)) {
    QCoreApplication::instance()->installNativeEventFilter(this);
  }
  ~SystemMenuItem() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

  bool nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* result) override {
    const MSG& event = *static_cast<const MSG*>(message);
    if (event.hwnd != m_window || event.message != WM_SYSCOMMAND || (event.wParam & 0xFFF0) != kItemId) {
      return false;
    }
    // Delayed until the system has finished with its menu.
    QMetaObject::invokeMethod(this, m_chosen, Qt::QueuedConnection);
    if (result != nullptr) *result = 0;
    return true;
  }

 private:
  const HWND m_window;
  const std::function<void()> m_chosen;
};

}  // namespace

void AddWindowMenuItem(QWidget& window, const QString& text, std::function<void()> chosen) {
  const HMENU menu = GetSystemMenu(reinterpret_cast<HWND>(window.winId()), FALSE);
  if (menu == nullptr) return;
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(menu, MF_STRING, kItemId, reinterpret_cast<LPCWSTR>(text.utf16()));
  new SystemMenuItem(window, std::move(chosen));
}

}  // namespace quarn
