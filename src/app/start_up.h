#pragma once

#include <QString>

#include "app/instance_lock.h"
#include "app/main_window.h"
#include "app/port_monitor.h"
#include "app/program.h"

namespace quarn {

/// What start-up asks of the process and the screen, one call a step.
class StartUpStage {
 public:
  virtual ~StartUpStage() = default;

  /// When it fails, `reason` says why.
  virtual InstanceLock TakeLock(QString& reason) = 0;
  /// Returns when the splash is gone. From then on there is a main dialog, not yet on the screen.
  virtual void ShowSplash() = 0;
  virtual MainWindow& Window() = 0;
  virtual PortMonitor& Monitor() = 0;
  /// Of the main dialog's screen; 0 when there is none.
  virtual int Dpi() = 0;
  /// Whether the menu bar's items do not fit on one line.
  virtual bool MenuBarWraps() = 0;
  /// In pixels.
  virtual int MessageFontHeight() = 0;
  virtual void AcceptDrops() = 0;
  virtual QString CommandLineFile() = 0;
  /// Moves the main dialog to this share of the screen's free space.
  virtual void PlaceMainDialog(int xPercent, int yPercent) = 0;
  virtual void ShowMainDialog() = 0;
};

enum class StartUpResult {
  Running,
  NotAlone,  ///< another one runs, or nobody could tell
  DisplayRefused,
};

/// From the program's objects to a polling main dialog: lock, splash, display, settings, ports, connection,
/// windows. Messages appear on the way and each is over before the next step.
StartUpResult StartUp(Program& program, StartUpStage& stage);

}  // namespace quarn
