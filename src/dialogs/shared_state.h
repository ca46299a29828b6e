#pragma once

#include <QString>
#include <bitset>
#include <initializer_list>
#include <optional>

#include "settings/setting_values.h"

namespace quarn {

/// The windows that ask things of one another.
enum class Window {
  MainDialog,
  TerminalScreen,
  FunctionKeyTable,
  PortNumber,
  DetailedPortList,
  PortSettings,
  CommandFormat,
  ScreenOption,
  MainOption,
};
inline constexpr std::size_t kWindowCount =
    static_cast<std::size_t>(Window::MainOption) + 1;  // the last of them

class WindowSet {
 public:
  WindowSet() = default;
  WindowSet(std::initializer_list<Window> windows) {
    for (const Window each : windows) Add(each);
  }
  void Add(Window window) { m_windows.set(PlaceOf(window)); }
  void Add(const WindowSet& others) { m_windows |= others.m_windows; }
  void Remove(Window window) { m_windows.reset(PlaceOf(window)); }
  [[nodiscard]] bool Contains(Window window) const { return m_windows.test(PlaceOf(window)); }
  /// Removes the window. Whether it was there.
  bool Take(Window window) {
    const bool was = Contains(window);
    Remove(window);
    return was;
  }
  bool operator==(const WindowSet&) const = default;

 private:
  static std::size_t PlaceOf(Window window) { return static_cast<std::size_t>(window); }

  std::bitset<kWindowCount> m_windows;
};

/// What one window asks of another. Whoever wants something puts it here. The window that it is for looks at
/// it in its own 100 ms tick, takes it away and acts. User-interface thread only.
struct WindowRequests {
  /// Show again what is shown: the settings, the connection or the ports present have changed.
  WindowSet refresh;
  WindowSet close;

  // For the Terminal Screen.
  bool clearLog = false;           ///< empty the log and the command line
  bool sendAction = false;         ///< as if SEND had been pressed
  std::optional<int> functionKey;  ///< load this stored command, 0 to 9
  bool functionKeyCtrl = false;    ///< append it; this stays as the last press of a button had it
  bool send = false;               ///< send the command line unless it is empty
  bool focus = false;              ///< take the keyboard focus

  // For the detailed list.
  bool suppressNextClick = false;  ///< the next click on a row is not meant as one

  /// Whether the window has a reason to look.
  [[nodiscard]] bool IsAnythingFor(Window window) const {
    const bool content =
        window == Window::TerminalScreen && (clearLog || sendAction || functionKey || send || focus);
    return content || refresh.Contains(window) || close.Contains(window);
  }
};

inline void RaisePortDialogRefreshes(WindowRequests& requests) {
  requests.refresh.Add({Window::PortNumber, Window::DetailedPortList, Window::PortSettings});
}

/// For changes of the connection or of the ports present: every window that shows one of them.
inline void RaiseConnectionRefreshes(WindowRequests& requests) {
  requests.refresh.Add({Window::MainDialog, Window::TerminalScreen});
  RaisePortDialogRefreshes(requests);
}

/// For a replacement of all settings: every window that shows any of them. The log begins anew, because its
/// lines may be longer than those of the new settings.
inline void RaiseSettingsRefreshes(WindowRequests& requests) {
  requests.clearLog = true;
  RaiseConnectionRefreshes(requests);
  requests.refresh.Add(
      {Window::CommandFormat, Window::ScreenOption, Window::MainOption, Window::FunctionKeyTable});
}

/// Asks every other window of the main dialog to close, but for the port settings, which have no use for it.
inline void RaiseCloseRequests(WindowRequests& requests) {
  requests.close.Add({Window::TerminalScreen, Window::FunctionKeyTable, Window::PortNumber,
                      Window::DetailedPortList, Window::CommandFormat, Window::ScreenOption,
                      Window::MainOption});
}

/// The state that all windows share; one instance for the life of the process.
struct SharedState {
  QString currentPortName = NoPort();  ///< kNoPort when no port is configured
  bool portBeingChanged = false;       ///< while a command opens or closes the port; the port monitor rests
  int displayScalePercent = 100;       ///< 100, 125, 150 or 175
  WindowRequests requests;
  /// The modeless windows that are open. While one is, no second one is made.
  WindowSet open;
};

}  // namespace quarn
