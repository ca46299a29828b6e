#include "app/file_commands.h"

#include <QFileInfo>
#include <QScopedValueRollback>
#include <QThread>
#include <utility>

#include "app/connection_commands.h"
#include "serial/open_port.h"
#include "settings/key_store.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"
#include "settings/user_file.h"

namespace quarn {
namespace {

const QString kConfirmation = QStringLiteral(": Confirmation");
const QString kSuffix = QStringLiteral("qrn");
const QString kQrnFiles = QStringLiteral("QRN Files (*.qrn) (*.qrn)");

/// A list made from braces does not check that it got memory.
QStringList FiltersWith(const QString& allFiles) {
  QStringList filters;
  filters.append(kQrnFiles);
  filters.append(allFiles);
  return filters;
}

void CloseConnection(Program& program) {
  ClosePort(program.connection);
  program.connection.connected.Update(PortChange::Closed);
}

}  // namespace

QString LoadUserFile(Program& program, const QString& path) {
  // Until the file's port is connected, its settings are in force and the former port is.
  const QScopedValueRollback underWay(program.state.portBeingChanged, true);
  QString loaded = OpenUserFile(path, program.workingSettingsFile, program.settings, *program.messages);
  if (loaded.isEmpty()) return {};
  CloseConnection(program);
  program.state.currentPortName = program.settings.comPort;
  if (program.state.currentPortName == kNoPort) {
    TellPortUndefined(*program.messages);
  } else {
    ConnectWithMessages(program);
  }
  // Last, because windows may have checked while a message was shown, before the connection was decided.
  RaiseSettingsRefreshes(program.state.requests);
  return loaded;
}

void FileCommands::Open() {
  Run([this] {
    if (!MayLoseChanges()) return;
    const QString path = m_chooser.AskOpenFile({QStringLiteral("Open Quarn Configuration File"),
                                                FiltersWith(QStringLiteral("All Files (*.*) (*)")), kSuffix,
                                                QString(), FolderInForce()});
    if (path.isEmpty()) return;
    if (!LoadUserFile(m_program, path).isEmpty()) m_program.fileLoaded = true;
    // Also a file that could not be loaded: the user can repair it by saving.
    SetUserFile(path);
    m_window.UpdateMenuState();
    QThread::yieldCurrentThread();
  });
}

void FileCommands::Save() {
  Run([this] {
    if (!m_program.userFile.isEmpty()) CopyTo(m_program.userFile);
  });
}

void FileCommands::SaveAs() {
  Run([this] {
    const QString& inForce = m_program.userFile;
    const QString path = m_chooser.AskSaveFile({QStringLiteral("Save As Quarn Configuration File"),
                                                FiltersWith(QStringLiteral("All files (*.*) (*)")), kSuffix,
                                                inForce.isEmpty() ? QStringLiteral("Untitled.qrn") : inForce,
                                                FolderInForce()});
    if (!path.isEmpty() && CopyTo(path)) SetUserFile(path);
  });
}

void FileCommands::CloseFile() {
  Run([this] {
    if (m_program.userFile.isEmpty() || !MayLoseChanges()) return;
    m_program.userFile.clear();
    m_window.UpdateMenuState();
    m_window.ShowUserFile();
  });
}

void FileCommands::RestoreDefaults() {
  Run([this] {
    if (!m_program.messages->AskYesNo(
            kConfirmation, QString(),
            QStringLiteral("Are you sure you want to restore the default settings?"), QString(),
            AnswerByDefault::Refuse)) {
      return;
    }
    if (!MayLoseChanges()) return;
    CloseConnection(m_program);
    RaiseCloseRequests(m_program.state.requests);
    RaiseSettingsRefreshes(m_program.state.requests);
    PutDefaultsInForce();
    m_program.userFile.clear();
    m_program.messages->ShowTransientMessage(QStringLiteral("Loaded the initial default settings."));
    SetUserFile(QString());
    TellPortUndefined(*m_program.messages);
    ShowOrHideTerminalScreen();
  });
}

void FileCommands::DropFiles(const QStringList& paths) {
  Run([this, &paths] {
    if (paths.isEmpty() || !MayLoseChanges()) return;
    const QString loaded = LoadUserFile(m_program, paths.first());
    if (!loaded.isEmpty()) m_program.fileLoaded = true;
    SetUserFile(loaded);
  });
}

bool FileCommands::MayExit() {
  bool may = false;
  Run([this, &may] {
    may = !HaveSettingsChanged() || AskAboutChanges(QStringLiteral("Exit program without saving?"));
  });
  return may;
}

void FileCommands::Run(const std::function<void()>& command) {
  if (m_running) return;
  const QScopedValueRollback<bool> running(m_running, true);
  command();
}

bool FileCommands::HaveSettingsChanged() const {
  const QString& file = m_program.userFile;
  return !file.isEmpty() && !HoldSameSettings(file, m_program.workingSettingsFile);
}

bool FileCommands::AskAboutChanges(const QString& question) {
  return m_program.messages->AskYesNo(kConfirmation, QString(), QStringLiteral("Settings have been changed."),
                                      question, AnswerByDefault::Refuse);
}

bool FileCommands::MayLoseChanges() {
  return !HaveSettingsChanged() || AskAboutChanges(QStringLiteral("Proceed without saving?"));
}

void FileCommands::SetUserFile(const QString& path) {
  m_program.userFile = path;
  m_window.ShowUserFile();
  // The menu follows the user file; the main dialog brings it up to date.
  m_program.state.requests.refresh.Add(Window::MainDialog);
}

QString FileCommands::FolderInForce() const {
  return m_program.userFile.isEmpty() ? QString() : QFileInfo(m_program.userFile).absolutePath();
}

bool FileCommands::CopyTo(const QString& path) {
  if (CopySettingsFile(m_program.workingSettingsFile, path)) return true;
  m_program.messages->ShowErrorMessage(QStringLiteral(": Error"), QString(),
                                       QStringLiteral("Could not save to the QRN file!"),
                                       QStringLiteral("Destination folder error."));
  return false;
}

void FileCommands::PutDefaultsInForce() {
  WriteDefaultFile(m_program.workingSettingsFile);
  // The program's defaults, not the file's: if nothing can be written, the file still has the old values.
  SettingsRecord defaults = DefaultSettings();
  defaults.loadedMarker = m_program.settings.loadedMarker;
  m_program.settings = std::move(defaults);
  m_program.state.currentPortName = m_program.settings.comPort;
}

void FileCommands::ShowOrHideTerminalScreen() {
  WindowRequests& requests = m_program.state.requests;
  const bool shown = IsOn(m_program.settings.startDisp);
  // A screen that has not yet seen the request to close stays as it is.
  if (!shown) {
    requests.close.Add(Window::TerminalScreen);
    return;
  }
  requests.close.Remove(Window::TerminalScreen);
  m_window.OpenTerminalScreen();
  requests.focus = true;
}

}  // namespace quarn
