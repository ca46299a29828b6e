#include <windows.h>

#include <utility>

#include "app/start_requests.h"

namespace quarn {
namespace {

constexpr wchar_t kClass[] = L"Quarn.exe.requests";
/// "QRN1": other programs' messages have other numbers.
constexpr ULONG_PTR kRequest = 0x51524E31;
/// The other program may be in a long call.
constexpr UINT kLongestWaitMs = 5000;

}  // namespace

class StartRequests::Receiver {
 public:
  explicit Receiver(std::function<void(const QString&)> asked) : m_asked(std::move(asked)) {
    WNDCLASSW window{};
    window.lpfnWndProc = &Receiver::Handle;
    window.hInstance = GetModuleHandleW(nullptr);
    window.lpszClassName = kClass;
    RegisterClassW(&window);
    m_window = CreateWindowW(kClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, window.hInstance, nullptr);
    if (m_window != nullptr) SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  }
  ~Receiver() {
    if (m_window != nullptr) DestroyWindow(m_window);
    UnregisterClassW(kClass, GetModuleHandleW(nullptr));
  }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

 private:
  static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM wide, LPARAM data) {
    auto* const self = reinterpret_cast<Receiver*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != WM_COPYDATA || self == nullptr) return DefWindowProcW(window, message, wide, data);
    const auto& request = *reinterpret_cast<const COPYDATASTRUCT*>(data);
    if (request.dwData != kRequest) return FALSE;
    self->m_asked(QString::fromWCharArray(static_cast<const wchar_t*>(request.lpData),
                                          static_cast<qsizetype>(request.cbData / sizeof(wchar_t))));
    return TRUE;
  }

  const std::function<void(const QString&)> m_asked;
  HWND m_window = nullptr;
};

StartRequests::StartRequests(std::function<void(const QString&)> asked)
    : m_receiver(std::make_unique<Receiver>(std::move(asked))) {}
StartRequests::~StartRequests() = default;

bool AskRunningProgram(const QString& file) {
  const HWND window = FindWindowExW(HWND_MESSAGE, nullptr, kClass, nullptr);
  if (window == nullptr) return false;
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  // Only the program in front may let another one come there.
  AllowSetForegroundWindow(process);
  std::wstring text = file.toStdWString();
  COPYDATASTRUCT request{kRequest, static_cast<DWORD>(text.size() * sizeof(wchar_t)), text.data()};
  DWORD_PTR taken = FALSE;
  return SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&request), SMTO_ABORTIFHUNG,
                             kLongestWaitMs, &taken) != 0 &&
         taken == TRUE;
}

}  // namespace quarn
