#include <QCoreApplication>
#include <cstdio>

#include "identity.h"
#include "send/command_line_options.h"
#include "send/sender.h"

namespace {

constexpr int kWrongUsage = 64;

}  // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  const quarn::send::Options options = quarn::send::ParseArguments(QCoreApplication::arguments().mid(1));
  if (!options.error.isEmpty()) {
    std::fprintf(stderr, "quarn-send: %s\n%s", options.error.toLocal8Bit().constData(), quarn::send::kUsage);
    return kWrongUsage;
  }
  if (options.help) {
    std::fputs(quarn::send::kUsage, stdout);
    return 0;
  }
  if (options.version) {
    std::printf("quarn-send %s\n", quarn::identity::kShortVersion);
    return 0;
  }
  return quarn::send::Send(options);
}
