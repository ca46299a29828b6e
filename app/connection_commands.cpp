#include "app/connection_commands.h"

namespace quarn {

bool ConnectWithMessages(Program& program) {
  const QString& port = program.state.currentPortName;
  const bool connected = ConnectPort(program.settings, program.connection, program.Environment());
  program.connection.connected = connected;
  if (connected) {
    program.messages->ShowTransientMessage(QStringLiteral("Successfully Connected to \"%1\".").arg(port), {});
  } else {
    program.messages->ShowErrorMessage(QStringLiteral(": Error"), QString(),
                                       QStringLiteral("  \"%1\" is not available.").arg(port),
                                       QStringLiteral("Check \"Detailed COM Port List\"."));
  }
  return connected;
}

void TellPortUndefined(MessageOperations& messages) {
  messages.ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                  QStringLiteral("COM port is undefined."),
                                  QStringLiteral("Sellect a COM port to connect."));
}

}  // namespace quarn
