#pragma once

#include "app/app_fixture.h"
#include "app/port_monitor.h"
#include "support/noted_pause.h"

namespace quarn::test {

/// The port monitor over the ports that a test lists.
class PortMonitorTest : public AppTest {
 protected:
  void SetUp() override { MakeFolders(); }
  /// Lists the ports and lets the first second pass.
  void StartMonitor() {
    monitor.ListPorts();
    for (int i = 0; i < 10; ++i) monitor.Tick();
    ASSERT_EQ(monitor.TickCount(), 0U);
  }
  bool ConnectionRefreshesRaised() {
    const WindowRequests& asked = program.state.requests;
    return asked.refresh.Contains(Window::MainDialog) && asked.refresh.Contains(Window::TerminalScreen) &&
           asked.refresh.Contains(Window::PortNumber) && asked.refresh.Contains(Window::DetailedPortList) &&
           asked.refresh.Contains(Window::PortSettings);
  }

  NotedPause pause{journal, {}};
  PortMonitor monitor{program, window, std::ref(pause)};
};

inline const QString kGone = NotAvailable("COM3");
inline const QString kUpdated = QStringLiteral("transient/COM port list has been updated.");
inline const QString kConnectedAgain =
    QStringLiteral("information/: Information//Successfully connected to  \"COM3\"/");
inline const QString kOffer =
    QStringLiteral("yes or no/: Confirmation//Do you want to connect to \"COM3\" ?/");

}  // namespace quarn::test
