#include "app/start_up.h"

#include "app/connection_commands.h"
#include "app/main_dialog.h"
#include "serial/port_list.h"
#include "settings/life_cycle.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kMostListedPorts = 30;
constexpr int kRightPercent = 98;
constexpr int kEdgePercent = 3;

void ListPorts(Program& program) {
  RefreshPortList(*program.portSource, program.connection);
  program.state.tooManyPorts = program.connection.portCount > kMostListedPorts;
}

void LoadWorkingSettings(Program& program) {
  PrepareWorkingFile(program.dataFolder);
  LoadInitialSettings(program.workingSettingsFile, program.settings, *program.messages);
}

void PlaceMainDialog(const Program& program, CQuarnDlg& dialog) {
  const int x = program.settings.mainPos == u"TR" ? kRightPercent : kEdgePercent;
  PlaceOnScreenByPercent(dialog, x, kEdgePercent);
}

void ConnectAtStart(Program& program) {
  program.state.currentPortName = program.settings.comPort;
  if (program.state.currentPortName != u"NONE") {
    ConnectWithMessages(program);
    return;
  }
  program.messages->ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                           QStringLiteral("COM port is undefined."),
                                           QStringLiteral("Sellect a COM port to connect."));
}

}  // namespace

void StartUp(Program& program, CQuarnDlg& dialog) {
  ListPorts(program);
  LoadWorkingSettings(program);
  ConnectAtStart(program);
  dialog.show();
  PlaceMainDialog(program, dialog);
  if (program.settings.startDisp == u"ON") dialog.OpenTerminalScreen();
  dialog.StartPolling();
}

}  // namespace quarn
