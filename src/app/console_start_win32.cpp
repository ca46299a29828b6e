// quarn.com: a console starts it for the word "quarn", because it looks for .com before .exe. A console does
// not wait for a program with windows, whose output would come after the next prompt. This program starts
// quarn.exe and, if that answers in the console, waits until its output is complete. It does not wait for
// windows.

#include <windows.h>
//
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/start_options.h"

namespace {

/// An open handle of the system.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : m_handle(handle) {}
  ~Handle() { Close(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  [[nodiscard]] HANDLE Get() const { return m_handle; }
  HANDLE* Place() { return &m_handle; }
  void Close() {
    if (m_handle != nullptr) CloseHandle(m_handle);
    m_handle = nullptr;
  }

 private:
  HANDLE m_handle = nullptr;
};

/// A pipe to the console, which a program with windows cannot write to. One for both streams: two would be
/// read one after the other, and a program that fills the second one would wait for ever.
class ConsolePipe {
 public:
  /// The stream for the program: this program's own, or the pipe if that is the console.
  HANDLE ForProgram(DWORD which) {
    const HANDLE own = GetStdHandle(which);
    DWORD mode = 0;
    if (own == nullptr) return nullptr;
    if (GetConsoleMode(own, &mode) == FALSE) {
      SetHandleInformation(own, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
      return own;
    }
    m_console = own;
    if (m_read.Get() == nullptr) {
      SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
      CreatePipe(m_read.Place(), m_write.Place(), &inherited, 0);
      SetHandleInformation(m_read.Get(), HANDLE_FLAG_INHERIT, 0);
    }
    return m_write.Get();
  }
  /// After the program was started: writes to the console until the program's output ends.
  void Pass() {
    if (m_read.Get() == nullptr) return;
    m_write.Close();
    std::string text;
    std::array<char, 1024> part{};
    DWORD count = 0;
    while (ReadFile(m_read.Get(), part.data(), static_cast<DWORD>(part.size()), &count, nullptr) != FALSE) {
      text.append(part.data(), count);
    }
    // The console has a different code page.
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int units = MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size);
    WriteConsoleW(m_console, wide.data(), static_cast<DWORD>(units), &count, nullptr);
  }

 private:
  HANDLE m_console = nullptr;
  Handle m_read;
  Handle m_write;
};

/// The folder of this program, with a backslash.
std::wstring OwnFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L'\\') + 1);
}

/// The part of the command line after this program's name.
std::wstring_view Arguments() {
  std::wstring_view line(GetCommandLineW());
  const bool quoted = line.starts_with(L'"');
  const std::size_t end = quoted ? line.find(L'"', 1) : line.find_first_of(L" \t");
  line.remove_prefix(end == std::wstring_view::npos ? line.size() : end + (quoted ? 1 : 0));
  line.remove_prefix(std::min(line.size(), line.find_first_not_of(L" \t")));
  return line;
}

/// Whether the program answers in the console, without a window.
bool AsksForAnAnswer() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (arguments == nullptr) return false;
  std::vector<std::u16string> texts;
  for (const std::wstring_view each : std::span(arguments, static_cast<std::size_t>(count)))
    texts.emplace_back(each.begin(), each.end());
  LocalFree(static_cast<void*>(arguments));
  return quarn::IsAnsweredAtOnce({texts.begin(), texts.end()});
}

/// A program that was started.
struct Started {
  Handle process;
  Handle thread;
  DWORD id = 0;
};

bool Start(const std::wstring& program, STARTUPINFOW& how, bool inherits, Started& started) {
  std::wstring line = L'"' + program + L"\" ";
  line += Arguments();
  PROCESS_INFORMATION information{};
  if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, inherits ? TRUE : FALSE, 0, nullptr,
                     nullptr, &how, &information) == FALSE) {
    return false;
  }
  *started.process.Place() = information.hProcess;
  *started.thread.Place() = information.hThread;
  started.id = information.dwProcessId;
  return true;
}

/// Starts the program, passes on its output and returns its exit status.
int Answer(const std::wstring& program) {
  ConsolePipe console;
  STARTUPINFOW how{};
  how.cb = sizeof how;
  how.dwFlags = STARTF_USESTDHANDLES;
  how.hStdOutput = console.ForProgram(STD_OUTPUT_HANDLE);
  how.hStdError = console.ForProgram(STD_ERROR_HANDLE);
  Started started;
  if (!Start(program, how, true, started)) return EXIT_FAILURE;
  console.Pass();
  DWORD status = EXIT_FAILURE;
  WaitForSingleObject(started.process.Get(), INFINITE);
  GetExitCodeProcess(started.process.Get(), &status);
  return static_cast<int>(status);
}

}  // namespace

int main() {
  const std::wstring program = OwnFolder() + L"quarn.exe";
  if (AsksForAnAnswer()) return Answer(program);
  STARTUPINFOW how{};
  how.cb = sizeof how;
  Started started;
  if (!Start(program, how, false, started)) return EXIT_FAILURE;
  // Lets its windows come to the front, as without this program in between.
  AllowSetForegroundWindow(started.id);
  return EXIT_SUCCESS;
}
