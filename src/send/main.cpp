#include <cstdio>

#include "identity.h"
#include "send/platform.h"
#include "send/send_options.h"
#include "send/sender.h"
#include "send/standard_output.h"
#include "terminal/standard_streams.h"

namespace {

namespace send = quarn::send;

int Run(const send::Options& options) {
  if (!options.error.isEmpty()) {
    send::Complain(options.error);
    std::fputs("usage: quarn-send [OPTION...] [--] COMMAND... (quarn-send --help lists the options)\n",
               stderr);
    return send::kWrongUsage;
  }
  if (options.help) return send::Print(send::kUsage) ? 0 : send::kNotPrinted;
  if (options.version) {
    const QByteArray version = QByteArray("quarn-send ") + quarn::identity::kShortVersion + '\n';
    return send::Print(version) ? 0 : send::kNotPrinted;
  }
  return send::Send(options);
}

}  // namespace

int main(int argc, char* argv[]) {
  quarn::OccupyStandardStreams();
  send::SpeakToConsoleInSystemEncoding();
  send::ComplainOfWarnings();
  const int status = Run(send::ParseArguments(send::ArgumentsOf(argc, argv)));
  if (status == send::kNotPrinted) return status;
  return send::EndOutput() ? status : send::kNotPrinted;
}
