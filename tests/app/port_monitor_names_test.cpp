#include "app/app_fixture.h"
#include "app/port_monitor.h"
#include "serial/friendly_name.h"

namespace quarn::test {
namespace {

/// Devices with "COM" in their friendly names that are not ports from COM1 to COM99.
class PortMonitorNames : public AppTest {
 protected:
  void SetUp() override { MakeFolders(); }
  void TickTimes(int times) {
    for (int i = 0; i < times; ++i) m_monitor.Tick();
  }

  const QString m_updated = QStringLiteral("transient/COM port list has been updated.");
  PortMonitor m_monitor{program, window, [](int) {}};
};

TEST_F(PortMonitorNames, ADeviceWithoutAUsableNameDisturbsNobody) {
  for (const char* name : {"USB Serial Port (COM104)", "pair (COM5->COM6)", "Gadget COM7 serial"}) {
    ports.present = PortsNamed({QStringLiteral("Adapter (COM3)"), QString::fromLatin1(name)});
    m_monitor.ListPorts();
    TickTimes(20);
    EXPECT_EQ(Happened(), QStringList()) << name;
    EXPECT_EQ(program.connection.portNames, QStringList{"COM3"}) << name;
  }
}

TEST_F(PortMonitorNames, NorDoesOneThatComesOrGoesWhileOthersAreThere) {
  ports.present = PortsNamed({"Adapter (COM3)"});
  m_monitor.ListPorts();
  TickTimes(11);
  ports.present = PortsNamed({"USB Serial Port (COM104)", "Adapter (COM3)"});
  TickTimes(20);
  EXPECT_EQ(Happened(), QStringList());
  ports.present = PortsNamed({"USB Serial Port (COM104)", "Adapter (COM3)", "Adapter (COM4)"});
  TickTimes(20);
  EXPECT_EQ(Happened(), QStringList{m_updated}) << "a port is reported, once";
  ports.present = PortsNamed({"Adapter (COM3)", "Adapter (COM4)"});
  TickTimes(20);
  EXPECT_EQ(Happened(), QStringList());
}

}  // namespace
}  // namespace quarn::test
