#pragma once

#include <QString>

namespace quarn {

/// What one window asks of another. Whoever wants something raises a flag; the window that owns the flag
/// looks at it in its own 100 ms tick, lowers it and acts. User-interface thread only.
struct WindowRequests {
  // Lowered by the Terminal Screen.
  bool clearLog = false;         ///< empty the log and the command line
  bool sendAction = false;       ///< as if SEND had been pressed
  bool terminalRefresh = false;  ///< read every layout setting again
  bool functionKey = false;      ///< load stored command `functionKeyIndex`, appended with Ctrl
  int functionKeyIndex = 0;      ///< 0 to 9
  bool functionKeyCtrl = false;
  bool send = false;   ///< send the command line unless it is empty
  bool focus = false;  ///< take the keyboard focus
  bool terminalClose = false;

  // Lowered by the main dialog.
  bool mainRefresh = false;
};

/// One flag per modeless dialog: set when it is created, cleared when it closes. While it is set no
/// second one is created.
struct OpenWindows {
  bool terminalScreen = false;
  bool functionKeyTable = false;
  bool terminalScreenOption = false;
};

/// The state that all windows share; one instance for the life of the process.
struct SharedState {
  QString currentPortName = QStringLiteral("NONE");  ///< "NONE" when no port is configured
  bool tooManyPorts = false;
  int displayScalePercent = 100;  ///< 100, 125, 150 or 175
  WindowRequests requests;
  OpenWindows open;
};

}  // namespace quarn
