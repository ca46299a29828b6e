#include <windows.h>

#include "app/terminal_output.h"

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

}  // namespace

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

}  // namespace quarn
