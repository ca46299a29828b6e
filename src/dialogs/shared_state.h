#pragma once

#include <QString>

namespace quarn {

/// Requests between windows. A window that wants something sets a flag; the window that owns the flag checks
/// it in its 100 ms tick, clears it and acts. User-interface thread only.
struct WindowRequests {
  // Cleared by the Terminal Screen.
  bool clearLog = false;         ///< empty the log and the command line
  bool sendAction = false;       ///< as if SEND had been pressed
  bool terminalRefresh = false;  ///< read every layout setting again
  bool functionKey = false;      ///< load stored command `functionKeyIndex`, appended with Ctrl
  int functionKeyIndex = 0;      ///< 0 to 9
  bool functionKeyCtrl = false;
  bool send = false;   ///< send the command line unless it is empty
  bool focus = false;  ///< take the keyboard focus
  bool terminalClose = false;

  // Cleared by the main dialog.
  bool mainRefresh = false;

  // Cleared by the port dialogs. A refresh means that the ports present or the connection changed.
  bool portNumberRefresh = false;
  bool portNumberClose = false;
  bool detailedListRefresh = false;
  bool detailedListClose = false;
  bool suppressNextClick = false;  ///< ignore the next click on a row of the detailed list
  bool portSettingsRefresh = false;

  // Cleared by the dialogs that edit settings. A refresh means that the settings changed.
  bool commandFormatRefresh = false;
  bool commandFormatClose = false;
  bool screenOptionRefresh = false;
  bool screenOptionClose = false;
  bool mainOptionRefresh = false;
  bool mainOptionClose = false;
  bool functionTableReload = false;
  bool functionTableClose = false;
};

inline void RaisePortDialogRefreshes(WindowRequests& requests) {
  requests.portNumberRefresh = true;
  requests.detailedListRefresh = true;
  requests.portSettingsRefresh = true;
}

/// For changes of the connection or of the ports present: every window that shows one of them.
inline void RaiseConnectionRefreshes(WindowRequests& requests) {
  requests.mainRefresh = true;
  requests.terminalRefresh = true;
  RaisePortDialogRefreshes(requests);
}

/// For a replacement of all settings: every window that shows any of them.
inline void RaiseSettingsRefreshes(WindowRequests& requests) {
  RaiseConnectionRefreshes(requests);
  requests.commandFormatRefresh = true;
  requests.screenOptionRefresh = true;
  requests.mainOptionRefresh = true;
  requests.functionTableReload = true;
}

/// Asks every other window of the main dialog to close.
inline void RaiseCloseRequests(WindowRequests& requests) {
  requests.terminalClose = true;
  requests.portNumberClose = true;
  requests.detailedListClose = true;
  requests.commandFormatClose = true;
  requests.screenOptionClose = true;
  requests.mainOptionClose = true;
  requests.functionTableClose = true;
}

inline bool IsTerminalAsked(const WindowRequests& requests) {
  return requests.clearLog || requests.sendAction || requests.terminalRefresh || requests.functionKey ||
         requests.send || requests.focus || requests.terminalClose;
}

/// One flag per modeless dialog: set when it is created, cleared when it closes. While it is set no second
/// one is created.
struct OpenWindows {
  bool terminalScreen = false;
  bool functionKeyTable = false;
  bool portNumber = false;
  bool detailedPortList = false;
  bool commandFormat = false;
  bool terminalScreenOption = false;
  bool mainDialogOption = false;
};

/// The state that all windows share; one instance for the life of the process.
struct SharedState {
  QString currentPortName = QStringLiteral("NONE");  ///< "NONE" when no port is configured
  bool tooManyPorts = false;
  bool portBeingChosen = false;   ///< from the choice in a port dialog until it is complete
  int displayScalePercent = 100;  ///< 100, 125, 150 or 175
  WindowRequests requests;
  OpenWindows open;
};

}  // namespace quarn
