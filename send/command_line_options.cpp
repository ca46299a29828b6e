#include "send/command_line_options.h"

namespace quarn::send {

const char kUsage[] =
    "usage: quarn-send [--settings FILE] [--port COMn] [--raw] COMMAND...\n"
    "\n"
    "Sends each COMMAND to the serial port, waits for its response and prints both as the\n"
    "operation log shows them.\n"
    "\n"
    "  --settings FILE  settings to use instead of the working settings file\n"
    "  --port COMn      port to use instead of the one that the settings name\n"
    "  --raw            print the response alone, byte for byte\n"
    "  --               what follows are commands, even if they begin with --\n"
    "  --help, --version\n"
    "\n"
    "exit status: that of the last command\n"
    "  0 response received    1 response time-out    2 empty response\n"
    "  3 response truncated   4 aborted (Ctrl+C)\n"
    "  5 the port or the settings could not be opened, or the line failed\n"
    "  64 wrong usage\n";

Options ParseArguments(const QStringList& arguments) {
  Options options;
  bool onlyCommands = false;
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    const QString& argument = arguments[i];
    if (onlyCommands || !argument.startsWith(u"--")) {
      options.commands.append(argument);
    } else if (argument == u"--") {
      onlyCommands = true;
    } else if (argument == u"--raw") {
      options.raw = true;
    } else if (argument == u"--help") {
      options.help = true;
    } else if (argument == u"--version") {
      options.version = true;
    } else if (argument == u"--settings" || argument == u"--port") {
      if (i + 1 == arguments.size()) {
        options.error = argument + QStringLiteral(" takes a value");
        return options;
      }
      (argument == u"--port" ? options.port : options.settingsFile) = arguments[++i];
    } else {
      options.error = QStringLiteral("unknown option: ") + argument;
      return options;
    }
  }
  if (options.commands.isEmpty() && !options.help && !options.version) {
    options.error = QStringLiteral("no command given");
  }
  return options;
}

}  // namespace quarn::send
