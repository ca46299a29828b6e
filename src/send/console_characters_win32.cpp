#include <windows.h>

#include <cstdlib>

#include "send/console_characters.h"

namespace quarn::send {
namespace {

UINT g_former = 0;

void PutBack() { SetConsoleOutputCP(g_former); }

bool IsConsole(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != FALSE;
}

}  // namespace

void SpeakToConsoleInSystemEncoding() {
  if (!IsConsole(STD_OUTPUT_HANDLE) && !IsConsole(STD_ERROR_HANDLE)) return;
  // The code page belongs to the console, which other programs use after this one.
  g_former = GetConsoleOutputCP();
  if (g_former != 0 && SetConsoleOutputCP(GetACP()) != FALSE) (void)std::atexit(PutBack);
}

}  // namespace quarn::send
