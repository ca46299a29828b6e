#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>

#include "send/platform.h"
#include "terminal/system_encoding.h"

namespace quarn::send {
namespace {

UINT g_former = 0;

void PutBack() { SetConsoleOutputCP(g_former); }

bool IsConsole(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != FALSE;
}

}  // namespace

/// The command line is UTF-16; the run-time library's version has lost all characters outside the code page.
Arguments ArgumentsOf(int /*argc*/, char** /*argv*/) {
  Arguments arguments;
  int count = 0;
  LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (words == nullptr) return arguments;
  for (int i = 1; i < count; ++i) {
    const QString text = QString::fromWCharArray(words[i]);
    arguments.push_back({text, ToSystemEncoding(text)});
  }
  LocalFree(words);
  return arguments;
}

void SpeakToConsoleInSystemEncoding() {
  if (!IsConsole(STD_OUTPUT_HANDLE) && !IsConsole(STD_ERROR_HANDLE)) return;
  // The code page belongs to the console, which other programs use after this one.
  g_former = GetConsoleOutputCP();
  if (g_former != 0 && SetConsoleOutputCP(GetACP()) != FALSE) (void)std::atexit(PutBack);
}

void PassBytesAsTheyAre() {
  // The run-time library would write CR LF for every LF.
  std::fflush(stdout);
  ::_setmode(::_fileno(stdout), _O_BINARY);
}

void TakeBytesAsTheyAre() { ::_setmode(::_fileno(stdin), _O_BINARY); }

}  // namespace quarn::send
