#include <new>

#include "app/port_monitor_fixture.h"
#include "settings/settings_table.h"

namespace quarn::test {
namespace {

struct Change {
  QStringList before, now;
  bool connected;
  QString current;
  PortEvent event;
};

TEST(DecideOnPorts, LooksAtTheConnectedPortWhenOneWent) {
  const std::vector<Change> changes{
      {{"COM1", "COM3"}, {"COM1"}, true, "COM3", PortEvent::Vanished},
      {{"COM1", "COM3"}, {"COM3"}, true, "COM3", PortEvent::None},
      {{"COM3"}, {}, true, "COM3", PortEvent::Vanished},
      {{"COM3"}, {}, false, "COM3", PortEvent::None},
      {{"COM1", "COM3", "COM4"}, {"COM4"}, true, "COM3", PortEvent::Vanished},
  };
  for (const Change& each : changes) {
    EXPECT_EQ(DecideOnPorts(each.before, each.now, each.connected, each.current), each.event)
        << each.before.join(u' ').toStdString() << " to " << each.now.join(u' ').toStdString();
  }
}

TEST(DecideOnPorts, LooksForTheConfiguredPortAtTheFirstDifference) {
  const std::vector<Change> changes{
      {{}, {"COM3"}, false, "COM3", PortEvent::Returned},
      {{"COM1"}, {"COM1", "COM3"}, false, "COM3", PortEvent::Returned},
      {{"COM4"}, {"COM3", "COM4"}, false, "COM3", PortEvent::Returned},
      {{"COM1"}, {"COM1", "COM2"}, false, "COM3", PortEvent::None},
      // Two at once: only the first position that differs counts.
      {{"COM1"}, {"COM1", "COM2", "COM3"}, false, "COM3", PortEvent::None},
      {{"COM1"}, {"COM1", "COM3"}, true, "COM3", PortEvent::None},
      {{"COM1"}, {"COM1", "COM3"}, false, "NONE", PortEvent::None},
  };
  for (const Change& each : changes) {
    EXPECT_EQ(DecideOnPorts(each.before, each.now, each.connected, each.current), each.event)
        << each.before.join(u' ').toStdString() << " to " << each.now.join(u' ').toStdString();
  }
}

TEST_F(PortMonitorTest, LetsTheFirstTenTicksPass) {
  monitor.ListPorts();
  ports.present = Adapters(1);
  for (int i = 0; i < 10; ++i) monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList{kUpdated});
  EXPECT_EQ(monitor.TickCount(), 1U);
}

TEST_F(PortMonitorTest, RestsWhileNothingCanHaveChanged) {
  ports.revision = 1;
  monitor.ListPorts();
  for (int i = 0; i < 10; ++i) {
    EXPECT_FALSE(monitor.IsAtRest()) << "the first second is counted in ticks";
    monitor.Tick();
  }
  EXPECT_FALSE(monitor.IsAtRest()) << "nobody has looked yet";
  monitor.Tick();
  EXPECT_TRUE(monitor.IsAtRest());
  ports.present = Adapters(1);
  ports.revision = 2;
  EXPECT_FALSE(monitor.IsAtRest());
  monitor.Tick(7);
  EXPECT_EQ(Happened(), QStringList{kUpdated});
  EXPECT_TRUE(monitor.IsAtRest());
  EXPECT_EQ(monitor.TickCount(), 8U) << "those that were slept over count";
}

TEST_F(PortMonitorTest, DoesNotRestWhereNobodyTellsOfChanges) {
  StartMonitor();
  for (int i = 0; i < 3; ++i) {
    monitor.Tick();
    EXPECT_FALSE(monitor.IsAtRest());
  }
}

/// While the message about a chosen port is shown the monitor waits; changes are handled afterwards.
TEST_F(PortMonitorTest, DoesNotRestOverAChangeItHasNotLookedAt) {
  ports.revision = 1;
  StartMonitor();
  monitor.Tick();
  program.state.portBeingChanged = true;
  ports.revision = 2;
  monitor.Tick();
  EXPECT_FALSE(monitor.IsAtRest());
  program.state.portBeingChanged = false;
  monitor.Tick();
  EXPECT_TRUE(monitor.IsAtRest());
}

TEST_F(PortMonitorTest, ComparesTheCountAlone) {
  ports.present = Adapters({"COM1", "COM3"});
  StartMonitor();
  ports.present = Adapters({"COM1", "COM4"});
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.connection.portNames, (QStringList{"COM1", "COM3"}));
  EXPECT_FALSE(program.state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(PortMonitorTest, KeepsTheListWhenItCannotBeHad) {
  ports.present = Adapters(2);
  StartMonitor();
  ports.works = false;
  monitor.Tick();
  EXPECT_EQ(program.connection.portNames.size(), 2);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortMonitorTest, LooksAgainAfterAMessageThatCouldNotBeShown) {
  StartMonitor();
  ports.present = Adapters(1);
  whileShown = [] { throw std::bad_alloc(); };
  EXPECT_THROW(monitor.Tick(), std::bad_alloc);
  whileShown = {};
  Happened();
  ports.present = Adapters(2);
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList{kUpdated});
}

TEST_F(PortMonitorTest, TellsOfTheConnectedPortsDisappearanceOnce) {
  ports.present = Adapters({"COM1", "COM3"});
  Configure(QStringLiteral("COM3"));
  program.connection.connected.Update(PortChange::Opened);
  StartMonitor();
  ports.present = Adapters({"COM1"});
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kGone, "start timer"}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
  EXPECT_TRUE(ConnectionRefreshesRaised());
  EXPECT_EQ(indicator.depth, 0);
  for (int i = 0; i < 5; ++i) monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortMonitorTest, LeavesTheHandleOfAVanishedPort) {
  const PseudoTerminal terminal;
  PlugIn(QStringLiteral("COM3"), terminal);
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  program.connection.connected.Update(
      OpeningThat(ConnectPort(program.settings, program.connection, program.Environment())));
  ASSERT_TRUE(program.connection.connected.IsSet());
  ports.present.clear();
  monitor.Tick();
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
}

/// After a port was refused, the former one counts as connected, also where there was none.
TEST_F(PortMonitorTest, MissesNoLineWhereThereWasNoPort) {
  StartMonitor();
  program.state.currentPortName = QStringLiteral("NONE");
  program.connection.connected.Update(PortChange::FormerChosen);
  for (int i = 0; i < 5; ++i) monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortMonitorTest, OnlyListsOtherChanges) {
  ports.present = Adapters({"COM1", "COM3"});
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  ports.present = Adapters({"COM1"});  // away while not connected
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList{kUpdated});
  EXPECT_EQ(program.connection.portNames.size(), 1);
  program.connection.connected.Update(PortChange::Opened);
  ports.present = Adapters({"COM1", "COM2"});  // added while connected
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList{kUpdated});
  EXPECT_EQ(program.connection.portNames, (QStringList{"COM1", "COM2"}));
  EXPECT_TRUE(ConnectionRefreshesRaised());
}

TEST_F(PortMonitorTest, AnsweredNoForgetsThePort) {
  WriteSettings(program.workingSettingsFile, {{"COM_PORT", "COM3"}});
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  ports.present = Adapters({"COM3"});
  messages.answers = {false};
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kOffer, "start timer"}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("NONE"));
  EXPECT_EQ(ReadValue(program.workingSettingsFile, keys::kComPort), QStringLiteral("COM3"))
      << "the next start uses the port again";
}

TEST_F(PortMonitorTest, AnsweredYesConnects) {
  const PseudoTerminal terminal;
  WriteSettings(program.workingSettingsFile, {});
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  PlugIn(QStringLiteral("COM3"), terminal);
  messages.answers = {true};
  // The port dialogs have the new state beside the message.
  QStringList refreshed;
  whileShown = [&] {
    const WindowSet& asked = program.state.requests.refresh;
    for (const auto& [each, name] : {std::pair{Window::PortNumber, "number"},
                                     {Window::DetailedPortList, "list"},
                                     {Window::PortSettings, "settings"}}) {
      if (!asked.Contains(each)) continue;
      EXPECT_EQ(journal.last(), kConnectedAgain) << name;
      refreshed.append(QLatin1String(name));
    }
  };
  monitor.Tick();
  EXPECT_EQ(refreshed, (QStringList{"number", "list", "settings"}));
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kOffer, kConnectedAgain, "start timer"}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
  EXPECT_EQ(ReadValue(program.workingSettingsFile, SettingsKey(u"COM_PORT=")), QStringLiteral("COM3"));
  EXPECT_TRUE(ConnectionRefreshesRaised());
}

TEST_F(PortMonitorTest, ConnectsAnewWhatItLeftOpen) {
  const PseudoTerminal first;
  const PseudoTerminal second;
  PlugIn(QStringLiteral("COM3"), first);
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  program.connection.connected.Update(
      OpeningThat(ConnectPort(program.settings, program.connection, program.Environment())));
  const auto before = program.connection.handle.Line();
  ports.present.clear();
  monitor.Tick();
  ASSERT_TRUE(UnplugPort(PortsFolder(m_folder), QStringLiteral("COM3")));
  PlugIn(QStringLiteral("COM3"), second);
  messages.answers = {true};
  monitor.Tick();
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_NE(program.connection.handle.Line(), before);
}

TEST_F(PortMonitorTest, TellsWhenThePortThatCameBackCannotBeOpened) {
  WriteSettings(program.workingSettingsFile, {{"COM_PORT", "COM3"}});
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  ports.present = Adapters({"COM3"});  // listed, but there is no device behind it
  messages.answers = {true};
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kOffer, kGone, "start timer"}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("NONE"));
  EXPECT_EQ(ReadValue(program.workingSettingsFile, keys::kComPort), QStringLiteral("COM3"))
      << "the next start uses the port again";
}

TEST_F(PortMonitorTest, ThirtyOnePortsCloseTheDetailedList) {
  ports.present = Adapters(30);
  StartMonitor();
  program.state.open.Add(Window::DetailedPortList);
  ports.present = Adapters(31);
  monitor.Tick();
  EXPECT_EQ(Happened(),
            QStringList{"information/: Information//Too many COM ports to display in the detailed "
                        "list./The \"Detailed COM Port List\" will be closed."});
  EXPECT_TRUE(program.state.requests.close.Contains(Window::DetailedPortList));
  EXPECT_EQ(program.connection.portNames.size(), 31);
  EXPECT_TRUE(ConnectionRefreshesRaised());
  EXPECT_EQ(indicator.depth, 0);
  ports.present = Adapters(30);
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList{kUpdated});
}

TEST_F(PortMonitorTest, ThirtyOnePortsAreListedSilentlyWithoutTheDetailedList) {
  ports.present = Adapters(30);
  StartMonitor();
  ports.present = Adapters(31);
  monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.connection.portNames.size(), 31);
  EXPECT_FALSE(program.state.requests.close.Contains(Window::DetailedPortList));
}

TEST_F(PortMonitorTest, AChangeDuringAMessageWaitsForItsEnd) {
  ports.present = Adapters({"COM1", "COM3"});
  Configure(QStringLiteral("COM3"));
  program.connection.connected.Update(PortChange::Opened);
  StartMonitor();
  ports.present = Adapters({"COM1"});
  messages.answers = {false};
  whileShown = [this] {
    ports.present = Adapters({"COM1", "COM3"});  // back at once
    monitor.Tick();
  };
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kGone, "start timer"}));
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kOffer, "start timer"}));
}

TEST_F(PortMonitorTest, AChangeWhileAPortIsBeingChosenWaitsForTheChoice) {
  ports.present = Adapters({"COM1", "COM3"});
  Configure(QStringLiteral("COM3"));
  program.connection.connected.Update(PortChange::Opened);
  StartMonitor();
  program.state.portBeingChanged = true;
  ports.present = Adapters({"COM1"});
  for (int i = 0; i < 3; ++i) monitor.Tick();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.connection.portNames.size(), 2);
  program.state.portBeingChanged = false;
  monitor.Tick();
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kGone, "start timer"}));
  EXPECT_EQ(program.connection.portNames.size(), 1);
}

TEST_F(PortMonitorTest, TheWaitIsShownWhileThePortsAreListedAndNotOverAMessage) {
  ports.present = Adapters(2);
  StartMonitor();
  QStringList depths;
  ports.whileListing = [&] { depths.append(QStringLiteral("listing at %1").arg(indicator.depth)); };
  whileShown = [&] { depths.append(QStringLiteral("message at %1").arg(indicator.depth)); };
  monitor.Tick();
  EXPECT_EQ(depths, QStringList{"listing at 0"}) << "nothing has changed";
  depths.clear();
  ports.present = Adapters(3);
  monitor.Tick();
  ASSERT_GE(depths.size(), 3);
  EXPECT_EQ(depths.first(), "listing at 0") << "they are counted first";
  EXPECT_EQ(depths.last(), "message at 0");
  for (const QString& each : depths.sliced(1, depths.size() - 2)) EXPECT_EQ(each, "listing at 1");
  EXPECT_EQ(indicator.depth, 0);
}

}  // namespace
}  // namespace quarn::test
