#include "app/start_up.h"

#include "app/connection_commands.h"
#include "app/file_commands.h"
#include "app/qrn_file.h"
#include "app/scaling.h"
#include "settings/setting_values.h"
#include "settings/working_file.h"

namespace quarn {
namespace {

constexpr int kRightPercent = 98;
constexpr int kEdgePercent = 3;

bool IsAlone(Program& program, StartUpStage& stage) {
  QString reason;
  switch (stage.TakeLock(reason)) {
    case InstanceLock::Taken:
      return true;
    case InstanceLock::TakenByAnother:
      program.messages->ShowPlainMessage(QStringLiteral("\"Quarn\" is already open !"));
      stage.AskRunningProgram();
      return false;
    case InstanceLock::Failed:
      break;
  }
  program.messages->ShowPlainMessage(
      QStringList{QStringLiteral("\"Quarn\" found opening error"), reason}.join(QLatin1Char('\n')).trimmed());
  return false;
}

bool DisplayFits(Program& program, StartUpStage& stage) {
  const QString caption = QStringLiteral(": Error");
  const int scaling = ScalingPercent(stage.Dpi());
  if (!IsSupportedScaling(scaling)) {
    const QString how = stage.TellHowToStart(scaling);
    program.messages->ShowErrorMessage(caption, QString(), QStringLiteral("Windows display scaling Settings"),
                                       QStringLiteral("Scaling must be 100, 125, 150 or 175(%)."));
    if (!how.isEmpty()) program.messages->ShowPlainMessage(how);
    return false;
  }
  program.state.displayScalePercent = scaling;
  if (stage.MenuBarWraps()) {
    program.messages->ShowErrorMessage(
        caption, QString(), QStringLiteral("Windows Text Font size Settings"),
        QStringLiteral("Text font size (%1 ) is too large").arg(stage.MessageFontHeight()));
    return false;
  }
  return true;
}

void TellInternalConfiguration(Program& program) {
  program.messages->ShowTransientMessage(QStringLiteral("Starting in internal configuration mode."), {});
}

/// The file named as an argument, if there is one and it looks like a configuration file.
QString FileToLoad(Program& program, StartUpStage& stage) {
  const QString named = stage.FileArgument();
  if (named.isEmpty()) return {};
  program.messages->ShowTransientMessage(QStringLiteral("Loading user difinition file."), {});
  QString file = LoadQrnFile(named, *program.messages);
  if (file.isEmpty()) TellInternalConfiguration(program);
  return file;
}

void LoadConfiguration(Program& program, const QString& file) {
  if (file.isEmpty()) {
    PrepareWorkingFile(program.dataFolder);
    LoadInitialSettings(program.workingSettingsFile, program.settings, *program.messages);
    return;
  }
  program.userFile = LoadUserFile(program, file);
  if (program.userFile.isEmpty()) {
    LoadInitialSettings(program.workingSettingsFile, program.settings, *program.messages);
    TellInternalConfiguration(program);
  }
  program.settings.loadedMarker = QStringLiteral("TRUE");
}

void ConnectAtStart(Program& program) {
  program.state.currentPortName = program.settings.comPort;
  if (program.state.currentPortName == kNoPort) {
    TellPortUndefined(*program.messages);
    program.connection.connected.Update(PortChange::Undefined);
    return;
  }
  ConnectWithMessages(program);
}

/// The main dialog is the smaller one, so where the last window covers the others it comes last.
void ShowWindows(StartUpStage& stage, bool withTerminalScreen) {
  const bool isMainLast = withTerminalScreen && !stage.MayPlaceWindows();
  if (isMainLast) stage.Window().OpenTerminalScreen();
  stage.ShowMainDialog();
  if (withTerminalScreen && !isMainLast) stage.Window().OpenTerminalScreen();
}

}  // namespace

StartUpResult StartUp(Program& program, StartUpStage& stage) {
  if (!IsAlone(program, stage)) return StartUpResult::NotAlone;
  stage.ShowSplash();
  if (!DisplayFits(program, stage)) return StartUpResult::DisplayRefused;
  stage.AcceptDrops();
  const QString file = FileToLoad(program, stage);
  stage.Monitor().ListPorts();
  LoadConfiguration(program, file);
  stage.PlaceMainDialog(program.settings.mainPos == values::kTopRight.text ? kRightPercent : kEdgePercent,
                        kEdgePercent);
  if (program.userFile.isEmpty()) ConnectAtStart(program);
  ShowWindows(stage, IsOn(program.settings.startDisp));
  MainWindow& window = stage.Window();
  window.SetTitle(QString());
  window.ShowUserFile();
  window.UpdateMenuState();
  window.StartTimer();
  return StartUpResult::Running;
}

}  // namespace quarn
