#pragma once

#include <QString>

namespace quarn {

/// What start-up and the commands need of the main dialog. User-interface thread only.
class MainWindow {
 public:
  virtual ~MainWindow() = default;

  /// Sets the title from the connected mark and the current port name, followed by `suffix`.
  virtual void SetTitle(const QString& suffix) = 0;
  /// Enables the menu items that are available now.
  virtual void UpdateMenuState() = 0;
  /// Updates the status line with the open user file.
  virtual void ShowUserFile() = 0;
  /// Opens the Terminal Screen unless it is open.
  virtual void OpenTerminalScreen() = 0;
  /// The 100 ms tick. It is paused while the port monitor shows a question or an error.
  virtual void StartTimer() = 0;
  virtual void StopTimer() = 0;
};

}  // namespace quarn
