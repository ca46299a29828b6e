#include "terminal/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace quarn {

void OccupyStandardStreams() {
  (void)std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : std::array{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is the stream's own. It is open the wrong way round, and not for programs
    // started from here.
    if (fcntl(stream, F_GETFD) < 0) {
      (void)::open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
    }
  }
}

}  // namespace quarn
