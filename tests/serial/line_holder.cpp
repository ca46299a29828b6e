// Another program on the line, for the tests of exclusive use. It opens a terminal device, prints the
// outcome, and holds the line until its standard input ends or it is killed.

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "serial/open_line_linux.h"

namespace {

/// Becomes a user without permissions.
bool BecomeNobody() {
  constexpr uid_t kNobody = 65534;
  return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

void Say(const char* word, const QString& reason) {
  std::printf("%s %s\n", word, reason.toUtf8().constData());
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  if (argc > 2 && std::string_view(argv[2]) == "--plain") {
    // A program that uses no lock.
    Say(::open(argv[1], O_RDWR | O_NOCTTY | O_CLOEXEC) >= 0 ? "open" : "failed", {});
    while (std::getchar() != EOF) {
    }
    return 0;
  }
  const bool asNobody = argc > 2 && std::string_view(argv[2]) == "--as-nobody";
  if (asNobody && !BecomeNobody()) return 2;
  const quarn::OpenResult opened = quarn::OpenTerminalDevice(QString::fromLocal8Bit(argv[1]));
  if (opened.line) {
    Say("open", {});
  } else if (opened.failure.kind == quarn::LineError::InUse) {
    Say("in-use", opened.failure.reason);
  } else if (opened.failure.kind == quarn::LineError::NoPermission) {
    Say("no-permission", opened.failure.reason);
  } else {
    Say("failed", opened.failure.reason);
  }
  while (std::getchar() != EOF) {
  }
  return 0;
}
