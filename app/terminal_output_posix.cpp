#include <cstdio>

#include "app/terminal_output.h"

namespace quarn {

bool WriteOnTerminal(const QString& text) {
  return std::fputs(text.toLocal8Bit().constData(), stdout) >= 0 && std::fflush(stdout) == 0;
}

}  // namespace quarn
