#include "dialogs/serial/port_choice.h"

#include <QScopedValueRollback>

#include "dialogs/serial/port_rules.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"

namespace quarn {
namespace {

constexpr int kBeforeConnectMs = 500;  // the title is seen, and the device comes to rest

bool OpenChosen(const DialogContext& context, const QString& port) {
  context.pause(kBeforeConnectMs);
  ClosePort(context.connection);
  SettingsRecord chosen = context.settings;
  chosen.comPort = port;
  return ConnectPort(chosen, context.connection, context.environment);
}

void ReopenFormer(const DialogContext& context, const QString& former) {
  context.connection.connected.Update(PortChange::Closed);
  context.state.currentPortName = former;
  // The chosen one may be open, without its settings: it must not stand in for the former one.
  ClosePort(context.connection);
  SettingsRecord settings = context.settings;
  // They still name a port that the person did not want back.
  settings.comPort = former;
  ConnectPort(settings, context.connection, context.environment);
  context.connection.connected.Update(PortChange::FormerChosen);
}

}  // namespace

bool ConnectToChosenPort(const DialogContext& context, const QString& port, FailureSentence sentence,
                         const TitleStatus& titleStatus) {
  const QScopedValueRollback underWay(context.state.portBeingChanged, true);
  const WaitShown wait(context.environment.waitIndicator);
  const QString former = context.state.currentPortName;
  titleStatus(QStringLiteral(" Connecting Port ... "));
  const bool opened = OpenChosen(context, port);
  if (opened) {
    context.connection.connected.Update(PortChange::Opened);
    titleStatus(QString());
    TellConnectedTo(context.Messages(), port);
    TakeAsCurrent(context, port);
  } else {
    TellFailedToConnect(context.Messages(), port, sentence);
    ReopenFormer(context, former);
  }
  titleStatus(QString());
  RaiseConnectionRefreshes(context.state.requests);
  return opened;
}

void TakeAsCurrent(const DialogContext& context, const QString& port) {
  context.settings.comPort = port;
  context.state.currentPortName = port;
  StoreValues(context.workingSettingsFile, {{keys::kComPort, port}}, context.Messages());
}

void ChooseNoPort(const DialogContext& context) {
  const QScopedValueRollback underWay(context.state.portBeingChanged, true);
  PortConnection& connection = context.connection;
  if (connection.connected.IsSet()) {
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
  connection.connected.Update(PortChange::Undefined);
  TakeAsCurrent(context, NoPort());
  RaiseConnectionRefreshes(context.state.requests);
}

}  // namespace quarn
