#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "send/line_ends.h"

namespace quarn::send {

void PassBytesAsTheyAre() {
  // The run-time library would write CR LF for every LF.
  std::fflush(stdout);
  ::_setmode(::_fileno(stdout), _O_BINARY);
}

}  // namespace quarn::send
