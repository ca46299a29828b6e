#include "terminal/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace quarn {

void OccupyStandardStreams() {
  // Writing then fails with a reason, and the line is given back.
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)std::signal(SIGXFSZ, SIG_IGN);
  for (const int stream : std::array{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free descriptor number is the stream's own. It is opened in the wrong direction, so that
    // using it fails, and closed for child processes.
    if (fcntl(stream, F_GETFD) < 0) {
      (void)::open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
    }
  }
}

}  // namespace quarn
