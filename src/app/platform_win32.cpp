#include <windows.h>

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QString>
#include <QUrl>
#include <QWidget>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "app/file_argument.h"
#include "app/platform.h"

namespace quarn {
namespace {

/// A program with windows has standard output only if it was redirected.
bool WriteRedirected(const QByteArray& bytes, TerminalStream stream) {
  const HANDLE output = GetStdHandle(stream == TerminalStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  DWORD written = 0;
  return output != nullptr && output != INVALID_HANDLE_VALUE &&
         WriteFile(output, bytes.constData(), static_cast<DWORD>(bytes.size()), &written, nullptr) != FALSE;
}

bool WriteOnConsole(const QString& text) {
  const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (console == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const bool done =
      WriteConsoleW(console, text.utf16(), static_cast<DWORD>(text.size()), &written, nullptr) != FALSE;
  CloseHandle(console);
  return done;
}

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

/// Without it Alt+F4 closes the window, and Alt+Space opens its menu as soon as the blank arrives.
class SystemKeys final : public QObject, public QAbstractNativeEventFilter {
 public:
  SystemKeys(QWidget& window, std::function<bool()> take)
      : QObject(&window), m_window(reinterpret_cast<HWND>(window.winId())), m_take(std::move(take)) {
    QCoreApplication::instance()->installNativeEventFilter(this);
  }
  ~SystemKeys() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

  bool nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* result) override {
    const MSG& event = *static_cast<const MSG*>(message);
    const bool isKey = event.message == WM_SYSKEYDOWN && (event.wParam == VK_F4 || event.wParam == VK_SPACE);
    const bool isBlank = event.message == WM_SYSCHAR && event.wParam == VK_SPACE;
    if (event.hwnd != m_window || !(isKey || isBlank) || !m_take()) return false;
    if (result != nullptr) *result = 0;
    return true;
  }

 private:
  const HWND m_window;
  const std::function<bool()> m_take;
};

}  // namespace

QString ReadFileArgument(const QStringList& /*arguments*/) {
  return WithinPathLimit(FileOfCommandLine(QString::fromWCharArray(GetCommandLineW())));
}

QString FileArgumentNote() {
  return QStringLiteral(
      "\n"
      "In a console write quarn, not quarn.exe: of quarn.exe FILE the name is not read.\n");
}

InstanceLock TakeInstanceLock(QString& reason) {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Quarn.exe");
  const DWORD error = GetLastError();
  if (mutex == nullptr) {
    reason =
        QStringLiteral("Quarn.exe: ") +
        QString::fromLocal8Bit(std::system_category().message(static_cast<int>(error)).c_str()).trimmed();
    return InstanceLock::Failed;
  }
  // The handle stays open: the name is taken until the process ends.
  return error == ERROR_ALREADY_EXISTS ? InstanceLock::TakenByAnother : InstanceLock::Taken;
}

bool WriteOnTerminal(const QString& text, TerminalStream stream) {
  if (WriteRedirected(text.toLocal8Bit(), stream)) return true;
  // The console belongs to the program that started this one. It is released at once, so that neither Ctrl+C
  // nor closing that window ends this process.
  if (AttachConsole(ATTACH_PARENT_PROCESS) == FALSE) return false;
  // The shell has already printed its next prompt: it does not wait for a program with windows.
  const bool done = WriteOnConsole(QLatin1Char('\n') + text);
  FreeConsole();
  return done;
}

bool IsTerminal(TerminalStream stream) {
  return GetFileType(GetStdHandle(stream == TerminalStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE)) ==
         FILE_TYPE_CHAR;
}

int WindowDpi(const QWidget& window) {
  return static_cast<int>(GetDpiForWindow(reinterpret_cast<HWND>(window.effectiveWinId())));
}

// The system's scaling is asked of the window, and no factor of the program's own changes that.
QString HowToStartAtScaling(int /*percent*/) { return {}; }

int MessageFontHeight() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0) == 0) return 0;
  return std::abs(static_cast<int>(metrics.lfMessageFont.lfHeight));
}

// Every Windows has fonts for the letters of all its languages.
void AddWindowMenuItem(QWidget& window, const QString& text, const QString& /*plainText*/,
                       std::function<void()> chosen) {
  const HMENU menu = GetSystemMenu(reinterpret_cast<HWND>(window.winId()), FALSE);
  if (menu == nullptr) return;
  AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
  AppendMenuW(menu, MF_STRING, kItemId, reinterpret_cast<LPCWSTR>(text.utf16()));
  new SystemMenuItem(window, std::move(chosen));
}

void TakeSystemKeys(QWidget& window, const std::function<bool()>& take) { new SystemKeys(window, take); }

bool OpenPage(const QUrl& page) { return QDesktopServices::openUrl(page); }

bool SystemFileDialogAddsSuffix() { return true; }

// There is one display, no session bus and no GTK.
DesktopSession::DesktopSession(const QStringList& /*arguments*/) : m_choseDisplay(false), m_spareGl(false) {}
DesktopSession::~DesktopSession() = default;

}  // namespace quarn
