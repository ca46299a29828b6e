// The connected line is lost and its port is back before the list is checked, or the port is in use when it
// is back.

#include "app/port_monitor_fixture.h"

namespace quarn::test {
namespace {

/// Connected to COM3. A test decides when its line is lost and which ports are listed.
class LostLineTest : public PortMonitorTest {
 protected:
  void SetUp() override {
    PortMonitorTest::SetUp();
    WriteSettings(program.workingSettingsFile, {});
    PlugIn(QStringLiteral("COM3"), m_first);
    Configure(QStringLiteral("COM3"));
    StartMonitor();
    program.connection.connected.Update(
        OpeningThat(ConnectPort(program.settings, program.connection, program.Environment())));
    ASSERT_TRUE(program.connection.connected.IsSet());
  }
  /// The device goes and comes back: the same name, another line.
  void AwayAndBack() {
    m_first.Close();
    ASSERT_TRUE(UnplugPort(PortsFolder(m_folder), QStringLiteral("COM3")));
    PlugPort(PortsFolder(m_folder), QStringLiteral("COM3"), m_second);
  }
  void Ticks(int count) {
    for (int i = 0; i < count; ++i) monitor.Tick();
  }

  PseudoTerminal m_first;
  PseudoTerminal m_second;
  // The title shows it before the question.
  const QStringList kLost{"stop timer", kGone, "start timer", "title", "menu state"};
  const QStringList kLostAndOffered = kLost + QStringList{"stop timer", kOffer};
};

TEST_F(LostLineTest, IsToldOnceThoughTheNameIsStillThere) {
  ports.revision = 1;
  Ticks(5);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_TRUE(monitor.IsAtRest());
  AwayAndBack();
  EXPECT_FALSE(monitor.IsAtRest()) << "nobody else tells of it";
  messages.answers = {true};
  whileShown = [this] {
    if (messages.shown.last() == kGone) {
      EXPECT_TRUE(program.connection.connected.IsSet()) << "not yet";
    }
    if (messages.shown.last() == kOffer) {
      EXPECT_FALSE(program.connection.connected.IsSet());
    }
  };
  const auto before = program.connection.handle.Line();
  Ticks(3);
  EXPECT_EQ(Happened(),
            kLostAndOffered + (QStringList{"information/: Information//Successfully connected to  \"COM3\"/",
                                           "start timer"}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_NE(program.connection.handle.Line(), before);
  EXPECT_FALSE(program.connection.handle.Line()->IsLost());
  EXPECT_TRUE(ConnectionRefreshesRaised());
  Ticks(5);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_TRUE(monitor.IsAtRest());
}

TEST_F(LostLineTest, AnsweredNoForgetsThePort) {
  AwayAndBack();
  messages.answers = {false};
  Ticks(5);
  EXPECT_EQ(Happened(), kLostAndOffered + QStringList{"start timer"});
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("NONE"));
}

TEST_F(LostLineTest, EveryWindowIsToldBeforeTheOfferAndAfterItsAnswer) {
  AwayAndBack();
  messages.answers = {false};
  bool toldBefore = false;
  whileShown = [&] {
    if (messages.shown.last() != kOffer) return;
    toldBefore = ConnectionRefreshesRaised();
    // The windows handle their requests while the question is shown.
    program.state.requests = {};
  };
  Ticks(5);
  EXPECT_TRUE(toldBefore);
  EXPECT_TRUE(ConnectionRefreshesRaised());
}

TEST_F(LostLineTest, IsSeenAfterTheMessageAboutAnotherPort) {
  ports.present.append(Adapter("COM9"));
  messages.answers = {false};
  whileShown = [this] {
    if (messages.shown.last() == kUpdated) AwayAndBack();
  };
  Ticks(5);
  EXPECT_EQ(Happened(), QStringList{kUpdated} + kLostAndOffered + QStringList{"start timer"});
}

TEST_F(LostLineTest, OfAPortThatIsUnpluggedIsToldAsThat) {
  m_first.Close();
  Ticks(2);
  EXPECT_EQ(Happened(), QStringList()) << "the list is a moment behind";
  ports.present.clear();
  Ticks(5);
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kGone, "start timer"}));
}

TEST_F(LostLineTest, WithAnotherPortInItsPlaceIsOfferedWhenItIsBack) {
  m_first.Close();
  ports.present = Adapters({"COM9"});
  Ticks(5);
  EXPECT_EQ(Happened(), kLost);
  EXPECT_EQ(program.connection.portNames, QStringList{"COM9"});
  ports.present = Adapters({"COM3", "COM9"});
  messages.answers = {false};
  Ticks(5);
  EXPECT_EQ(Happened(), (QStringList{kUpdated, "stop timer", kOffer, "start timer"}));
}

TEST_F(LostLineTest, IsOfferedOnceWhateverHappensWhileItIsTold) {
  AwayAndBack();
  messages.answers = {false};
  whileShown = [this] {
    if (messages.shown.last() == kGone) ports.present.append(Adapter("COM9"));
  };
  Ticks(5);
  EXPECT_EQ(Happened(), (kLost + QStringList{kUpdated, "stop timer", kOffer, "start timer"}));
}

TEST_F(LostLineTest, IsToldWhereThePortsCannotBeListed) {
  m_first.Close();
  ports.works = false;
  Ticks(5);
  EXPECT_EQ(Happened(), kLost);
  EXPECT_FALSE(program.connection.connected.IsSet());
}

TEST_F(LostLineTest, IsToldAmongMorePortsThanTheDetailedListShows) {
  ports.present = Adapters(31);
  Ticks(1);
  EXPECT_EQ(Happened(), QStringList());
  m_first.Close();
  messages.answers = {false};
  Ticks(5);
  EXPECT_EQ(Happened(), kLostAndOffered + QStringList{"start timer"});
}

/// It counts as connected after another port was refused and this one could not be reopened.
TEST_F(LostLineTest, IsALineThatIsNotThereAtAll) {
  ClosePort(program.connection);
  messages.answers = {false};
  Ticks(5);
  EXPECT_EQ(Happened(), kLostAndOffered + QStringList{"start timer"});
}

// Wine opens a port twice.

TEST_F(PortMonitorTest, TriesAgainWhileThePortIsInUse) {
  const PseudoTerminal terminal;
  WriteSettings(program.workingSettingsFile, {});
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  PlugIn(QStringLiteral("COM3"), terminal);
  PortConnection other = program.connection;
  other.portNames = {QStringLiteral("COM3")};
  ASSERT_TRUE(ConnectPort(program.settings, other, program.Environment()));
  int pauses = 0;
  pause.during = [&] {
    if (++pauses == 3) ClosePort(other);
  };
  messages.answers = {true};
  monitor.Tick();
  EXPECT_EQ(Happened(),
            (QStringList{kUpdated, "stop timer", kOffer, "pause 100", "pause 100", "pause 100",
                         "information/: Information//Successfully connected to  \"COM3\"/", "start timer"}));
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
}

TEST_F(PortMonitorTest, TellsWhenThePortStaysInUse) {
  const PseudoTerminal terminal;
  Configure(QStringLiteral("COM3"));
  StartMonitor();
  PlugIn(QStringLiteral("COM3"), terminal);
  PortConnection other = program.connection;
  other.portNames = {QStringLiteral("COM3")};
  ASSERT_TRUE(ConnectPort(program.settings, other, program.Environment()));
  messages.answers = {true};
  monitor.Tick();
  const QStringList happened = Happened();
  EXPECT_EQ(happened.count(QStringLiteral("pause 100")), 49);
  EXPECT_TRUE(happened.contains(kGone));
  EXPECT_EQ(program.connection.lastFailure.kind, LineError::InUse);
  EXPECT_FALSE(program.connection.connected.IsSet());
  ClosePort(other);
}

}  // namespace
}  // namespace quarn::test
