#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/program.h"

namespace quarn {

/// Loads a user's configuration file into the current settings and connects to its port, and shows the
/// results. Returns the path, or an empty text if it was not loaded; then the connection is unchanged. The
/// caller sets the open user file.
QString LoadUserFile(Program& program, const QString& path);

/// The commands of the File menu, and dropping a file. User-interface thread only.
///
/// A command is ignored while another one shows a question or a message.
class FileCommands {
 public:
  FileCommands(Program& program, MainWindow& window, FileChooser& chooser)
      : m_program(program), m_window(window), m_chooser(chooser) {}

  void Open();
  /// Does nothing in the internal configuration state.
  void Save();
  void SaveAs();
  /// Does not change the current settings, the working file and the connection.
  void CloseFile();
  void RestoreDefaults();
  /// Loads the first of the dropped files.
  void DropFiles(const QStringList& paths);
  /// Whether the program may end. Asks if the settings differ from the open user file.
  [[nodiscard]] bool MayExit();

 private:
  /// Runs a command unless another one is running.
  void Run(const std::function<void()>& command);
  [[nodiscard]] bool HaveSettingsChanged() const;
  bool AskAboutChanges(const QString& question);
  /// True if nothing would be lost, or if the user agrees.
  bool MayLoseChanges();
  void SetUserFile(const QString& path);
  /// The folder of the user file; empty if there is none.
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
