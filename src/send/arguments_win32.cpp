#include <windows.h>

#include <shellapi.h>

#include "send/arguments.h"
#include "terminal/system_encoding.h"

namespace quarn::send {

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

}  // namespace quarn::send
