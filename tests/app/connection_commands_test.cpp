#include "app/connection_commands.h"

#include <algorithm>
#include <functional>

#include "app/app_fixture.h"
#include "serial/port_list.h"
#include "support/noted_pause.h"
#include "support/scripted_line.h"

namespace quarn::test {
namespace {

class ConnectionCommands : public AppTest {
 protected:
  void SetUp() override {
    MakeFolders();
    PlugIn(QStringLiteral("COM3"), terminal);
    RefreshPorts();
    Configure(QStringLiteral("COM3"));
  }
  void RefreshPorts() { ASSERT_TRUE(RefreshPortList(ports, program.connection)); }
  void Unplug() {
    ports.present.clear();
    RefreshPorts();
  }
  void ConnectSilently() {
    Connect(program);
    ASSERT_TRUE(program.connection.connected.IsSet());
    journal.clear();
    program.state.requests = {};
  }

  PseudoTerminal terminal;
  const NotedPause pause{journal, {}};
};

TEST_F(ConnectionCommands, ConnectTells) {
  Connect(program);
  EXPECT_EQ(Happened(), QStringList{Connected("COM3")});
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::TerminalScreen));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::PortNumber));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::DetailedPortList));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::PortSettings));
}

TEST_F(ConnectionCommands, ConnectToAMissingPortTells) {
  Unplug();
  program.connection.connected.Update(PortChange::Opened);
  Connect(program);
  EXPECT_EQ(Happened(), QStringList{NotAvailable("COM3")});
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
}

TEST_F(ConnectionCommands, DisconnectAsksAndKeepsThePort) {
  ConnectSilently();
  messages.answers = {true};
  Disconnect(program);
  EXPECT_EQ(Happened(),
            (QStringList{"yes or no/: Confirmation//Are you sure you want to disconnect the COM port?/",
                         "transient/\"COM3\" was disconnected."}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsNull());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
  for (const Window each : {Window::MainDialog, Window::TerminalScreen, Window::PortNumber,
                            Window::DetailedPortList, Window::PortSettings}) {
    EXPECT_TRUE(program.state.requests.refresh.Contains(each)) << static_cast<int>(each);
  }
  Connect(program);
  EXPECT_TRUE(program.connection.connected.IsSet());
}

TEST_F(ConnectionCommands, DisconnectIsAPlainClose) {
  Journal asked;
  program.connection.handle = PortHandle(std::make_shared<ScriptedLine>(asked));
  program.connection.connected.Update(PortChange::Opened);
  messages.answers = {true};
  Disconnect(program);
  const std::vector<std::string> calls = asked.Entries();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "close"), 1);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "purge"), 0) << "nothing is thrown away first";
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "set state"), 0);
}

TEST_F(ConnectionCommands, DisconnectAnsweredNoChangesNothing) {
  ConnectSilently();
  const auto line = program.connection.handle.Line();
  messages.answers = {false};
  Disconnect(program);
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(program.connection.handle.Line(), line);
  EXPECT_FALSE(program.state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_EQ(Happened().size(), 1);
}

TEST_F(ConnectionCommands, DisconnectWithoutAConnectionDoesNothing) {
  Disconnect(program);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(ConnectionCommands, ResetShowsItselfInTheTitle) {
  ConnectSilently();
  const auto line = program.connection.handle.Line();
  Reset(program, window, std::ref(pause));
  EXPECT_EQ(Happened(),
            (QStringList{"title- Resetting Port ...", "pause 500", "title",
                         "information/: Information//\"COM3\" :  Reset completed successfully./"}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_NE(program.connection.handle.Line(), line);
}

TEST_F(ConnectionCommands, AFailedResetIsToldWithoutQuotesAndLeavesNoConnection) {
  ConnectSilently();
  Unplug();
  Reset(program, window, std::ref(pause));
  EXPECT_EQ(Happened(), (QStringList{"title- Resetting Port ...", "pause 500", "title",
                                     "information/: Error//COM3:  Reset Failed./"}));
  EXPECT_FALSE(program.connection.connected.IsSet());
}

}  // namespace
}  // namespace quarn::test
