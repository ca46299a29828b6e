#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/program.h"

namespace quarn {

/// Loads a user's configuration file into the settings in force and connects to the port that it names,
/// telling how each went. Returns the path, or nothing when it was not loaded; then the connection is what
/// it was. The user file in force is left to the caller.
QString LoadUserFile(Program& program, const QString& path);

/// What the File menu does, and the drop of a file. User-interface thread only.
///
/// A command that comes while another one is still asking or telling something is ignored.
class FileCommands {
 public:
  FileCommands(Program& program, MainWindow& window, FileChooser& chooser)
      : m_program(program), m_window(window), m_chooser(chooser) {}

  void Open();
  /// Does nothing in the internal configuration state.
  void Save();
  void SaveAs();
  /// Leaves the settings in force, the working file and the connection as they are.
  void CloseFile();
  void RestoreDefaults();
  /// Loads the first of the dropped files.
  void DropFiles(const QStringList& paths);
  /// Whether the program may end. Asks when the settings differ from the user file in force.
  [[nodiscard]] bool MayExit();

 private:
  /// Runs a command unless another one runs.
  void Run(const std::function<void()>& command);
  [[nodiscard]] bool HaveSettingsChanged() const;
  bool AskAboutChanges(const QString& question);
  /// True when nothing would be lost, or when the person agrees to it.
  bool MayLoseChanges();
  void SetUserFile(const QString& path);
  /// The folder of the user file, or nothing without one.
  [[nodiscard]] QString FolderInForce() const;
  bool CopyTo(const QString& path);
  void PutDefaultsInForce();
  void ShowOrHideTerminalScreen();

  Program& m_program;
  MainWindow& m_window;
  FileChooser& m_chooser;
  bool m_running = false;
};

}  // namespace quarn
