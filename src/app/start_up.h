#pragma once

#include <QString>

#include "app/main_window.h"
#include "app/platform.h"
#include "app/port_monitor.h"
#include "app/program.h"

namespace quarn {

/// What start-up asks of the process and the screen, one call per step.
class StartUpStage {
 public:
  virtual ~StartUpStage() = default;

  /// If it fails, `reason` says why.
  virtual InstanceLock TakeLock(QString& reason) = 0;
  /// Asks the running program to come to the front, and to open the file of the command line, if there is
  /// one.
  virtual void AskRunningProgram() = 0;
  /// Returns when the splash is closed. Then a main dialog exists, not yet shown.
  virtual void ShowSplash() = 0;
  virtual MainWindow& Window() = 0;
  virtual PortMonitor& Monitor() = 0;
  /// Of the main dialog's screen; 0 if there is none.
  virtual int Dpi() = 0;
  /// Says on standard error how to start at a scaling that is supported, if there is a way. Returns the same
  /// line if nobody reads it there.
  virtual QString TellHowToStart(int scalingPercent) = 0;
  /// Whether the menu bar's items do not fit on one line.
  virtual bool MenuBarWraps() = 0;
  /// In pixels.
  virtual int MessageFontHeight() = 0;
  virtual void AcceptDrops() = 0;
  virtual QString FileArgument() = 0;
  /// Moves the main dialog to this share of the screen's free space.
  virtual void PlaceMainDialog(int xPercent, int yPercent) = 0;
  virtual void ShowMainDialog() = 0;
  /// Whether windows stand where they are put. If not, the window that is shown last covers the others.
  virtual bool MayPlaceWindows() = 0;
};

enum class StartUpResult {
  Running,
  NotAlone,  ///< another one runs, or this could not be determined
  DisplayRefused,
};

/// Runs the whole start, up to a running main dialog: lock, splash, display, settings, ports, connection,
/// windows. The messages of a step are closed before the next step.
StartUpResult StartUp(Program& program, StartUpStage& stage);

}  // namespace quarn
