#include "app/terminal_output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quarn {

bool WriteOnTerminal(const QString& text, TerminalStream stream) {
  std::FILE* const file = stream == TerminalStream::Output ? stdout : stderr;
  if (std::fputs(text.toLocal8Bit().constData(), file) >= 0 && std::fflush(file) == 0) return true;
  if (file == stdout) std::fprintf(stderr, "quarn: standard output: %s\n", std::strerror(errno));
  return false;
}

}  // namespace quarn
