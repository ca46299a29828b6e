#pragma once

#include <QString>

namespace quarn {

/// What start-up and the commands need of the main dialog. User-interface thread only.
class MainWindow {
 public:
  virtual ~MainWindow() = default;

  /// The title from the connected mark and the current port name, with `suffix` behind it.
  virtual void SetTitle(const QString& suffix) = 0;
  /// Enables the menu items that can be used now.
  virtual void UpdateMenuState() = 0;
  /// Brings the status line up to date with the user file in force.
  virtual void ShowUserFile() = 0;
  /// Opens the Terminal Screen unless it is open.
  virtual void OpenTerminalScreen() = 0;
  /// The 100 ms tick. It rests while the port monitor has a question or an error on the screen.
  virtual void StartTimer() = 0;
  virtual void StopTimer() = 0;
};

}  // namespace quarn
