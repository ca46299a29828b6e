#include "serial/dialogs/port_choice.h"

#include "serial/dialogs/port_rules.h"
#include "settings/key_store.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

constexpr int kBeforeConnectMs = 500;  // the title is seen, and the device comes to rest

void TellConnected(const DialogContext& context, const QString& port) {
  context.Messages().ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                            QStringLiteral("Successfully connected to  \"%1\"").arg(port),
                                            QString());
}

void TellFailed(const DialogContext& context, const QString& port, FailureSentence sentence) {
  QString text = QStringLiteral("Failed to connect to \"%1\"").arg(port);
  if (sentence == FailureSentence::WithFullStop) text += QLatin1Char('.');
  context.Messages().ShowErrorMessage(QStringLiteral(": Error"), QString(), text,
                                      QStringLiteral("Check \"Detailed COM Port List\"."));
}

/// From here on this is the port, also for the next start.
void TakeAsCurrent(const DialogContext& context, const QString& port) {
  UpdateValue(context.workingSettingsFile, keys::kComPort, port);
  context.settings.comPort = port;
  context.state.currentPortName = port;
}

bool Open(const DialogContext& context, const SettingsRecord& settings) {
  const WaitShown wait(context.environment.waitIndicator);
  return ConnectPort(settings, context.connection, context.environment);
}

}  // namespace

bool ConnectToChosenPort(const DialogContext& context, const QString& port, FailureSentence sentence,
                         const TitleStatus& titleStatus) {
  PortConnection& connection = context.connection;
  const QString former = context.state.currentPortName;
  titleStatus(QStringLiteral(" Connecting Port ... "));
  {
    const WaitShown wait(context.environment.waitIndicator);
    context.pause.For(kBeforeConnectMs);
    ClosePort(connection);
  }
  SettingsRecord chosen = context.settings;
  chosen.comPort = port;
  const bool opened = Open(context, chosen);
  if (opened) {
    // All of it before the message: the ports are watched while that is up, and what is watched for is the
    // current port.
    connection.connected = true;
    TakeAsCurrent(context, port);
    titleStatus(QString());
    TellConnected(context, port);
  } else {
    titleStatus(QString());
    TellFailed(context, port, sentence);
    connection.connected = false;
    context.state.currentPortName = former;
    Open(context, context.settings);
    connection.connected = true;
    titleStatus(QString());
  }
  RaiseConnectionRefreshes(context.state.requests);
  return opened;
}

void ChooseNoPort(const DialogContext& context) {
  PortConnection& connection = context.connection;
  if (connection.connected) {
    ClosePort(connection);
    context.Messages().ShowInformationMessage(
        QStringLiteral(": Information"), QString(),
        QStringLiteral("  \"%1\" has been disconnected.").arg(context.state.currentPortName),
        QStringLiteral(" COM port is undefined."));
  } else {
    context.Messages().ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                              QStringLiteral("COM port settings have become undefined."),
                                              QString());
  }
  connection.connected = false;
  TakeAsCurrent(context, NoPort());
  RaiseConnectionRefreshes(context.state.requests);
}

}  // namespace quarn
