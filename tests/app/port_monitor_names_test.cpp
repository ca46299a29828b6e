#include "app/app_fixture.h"
#include "app/port_monitor.h"

namespace quarn::test {
namespace {

/// Devices whose names hold "COM" and name no port that can be opened.
class PortMonitorNames : public AppTest {
 protected:
  void SetUp() override { MakeFolders(); }
  void TickTimes(int times) {
    for (int i = 0; i < times; ++i) m_monitor.Tick();
  }

  const QString m_updated = QStringLiteral("transient/COM port list has been updated.");
  PortMonitor m_monitor{program, window};
};

TEST_F(PortMonitorNames, ADeviceWithoutAUsableNameDisturbsNobody) {
  ports.names = {"COM3"};
  for (const char* name : {"USB Serial Port (COM104)", "pair (COM5->COM6)", "Gadget COM7 serial"}) {
    ports.others = {QString::fromLatin1(name)};
    m_monitor.ListPorts();
    TickTimes(1000);
    EXPECT_EQ(Happened(), QStringList()) << name;
    EXPECT_EQ(program.connection.portCount, 1) << name;
  }
}

TEST_F(PortMonitorNames, NorDoesOneThatComesOrGoesWhileOthersAreThere) {
  ports.names = {"COM3"};
  m_monitor.ListPorts();
  TickTimes(11);
  ports.others = {"USB Serial Port (COM104)"};
  TickTimes(1000);
  EXPECT_EQ(Happened(), QStringList());
  ports.names = {"COM3", "COM4"};
  TickTimes(1000);
  EXPECT_EQ(Happened(), QStringList{m_updated}) << "a port that is one is told of, once";
  ports.others.clear();
  TickTimes(1000);
  EXPECT_EQ(Happened(), QStringList());
}

}  // namespace
}  // namespace quarn::test
