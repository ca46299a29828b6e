#include "app/connection_commands.h"

#include <QScopedValueRollback>

#include "dialogs/serial/port_messages.h"

namespace quarn {
namespace {

constexpr int kBeforeResetMs = 500;  // the title is seen, and the device comes to rest

QString Information() { return QStringLiteral(": Information"); }
QString Error() { return QStringLiteral(": Error"); }

}  // namespace

void TellPortUndefined(MessageOperations& messages) {
  messages.ShowInformationMessage(Information(), QString(), QStringLiteral("COM port is undefined."),
                                  QStringLiteral("Sellect a COM port to connect."));
}

bool ConnectWithMessages(Program& program) {
  const QScopedValueRollback underWay(program.state.portBeingChanged, true);
  const QString port = program.state.currentPortName;
  const bool connected = ConnectPort(program.settings, program.connection, program.Environment());
  program.connection.connected.Update(OpeningThat(connected));
  if (connected) {
    program.messages->ShowTransientMessage(QStringLiteral("Successfully Connected to \"%1\".").arg(port), {});
  } else {
    TellPortNotAvailable(*program.messages, port);
  }
  return connected;
}

void Connect(Program& program) {
  if (ConnectWithMessages(program)) RaiseConnectionRefreshes(program.state.requests);
}

void Disconnect(Program& program) {
  if (!program.connection.connected.IsSet()) return;
  const QString port = program.state.currentPortName;
  if (!program.messages->AskYesNo(QStringLiteral(": Confirmation"), QString(),
                                  QStringLiteral("Are you sure you want to disconnect the COM port?"),
                                  QString(), AnswerByDefault::Refuse)) {
    return;
  }
  ClosePort(program.connection);
  program.connection.connected.Update(PortChange::Closed);
  program.messages->ShowTransientMessage(QStringLiteral("\"%1\" was disconnected.").arg(port), {});
  RaiseConnectionRefreshes(program.state.requests);
}

void Reset(Program& program, MainWindow& window, const Pause& pause) {
  const QScopedValueRollback underWay(program.state.portBeingChanged, true);
  window.SetTitle(QStringLiteral("- Resetting Port ..."));
  pause(kBeforeResetMs);
  const bool reset = ResetPort(program.settings, program.connection, program.Environment());
  program.connection.connected.Update(OpeningThat(reset));
  RaiseConnectionRefreshes(program.state.requests);
  window.SetTitle(QString());
  const QString port = program.state.currentPortName;
  program.messages->ShowInformationMessage(
      reset ? Information() : Error(), QString(),
      reset ? QStringLiteral("\"%1\" :  Reset completed successfully.").arg(port)
            : QStringLiteral("%1:  Reset Failed.").arg(port),
      QString());
}

}  // namespace quarn
