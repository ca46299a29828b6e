#include "serial/open_port.h"

#include <QStringList>
#include <memory>

#include "serial/line_parameters.h"
#include "serial/line_test_support.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"
#include "support/scripted_line.h"

namespace quarn {
namespace {

using Steps = std::vector<std::string>;

class OpenPortTest : public testing::Test {
 protected:
  OpenPortTest() {
    m_settings.comPort = QStringLiteral("COM3");
    m_settings.comBps = QStringLiteral("19200");
    m_settings.comBits = QStringLiteral("7");
    m_settings.comParity = QStringLiteral("Odd");
    m_settings.comStop = QStringLiteral("2");
    m_settings.portSpeed = QStringLiteral("HIGH");
    m_next.line = m_line;
    m_opener.open = [this](const QString& /*path*/) { return m_next; };
    m_messages.whileShown = [this] { m_journal.Note(m_messages.shown.last().toStdString()); };
    m_indicator.changed = [this] { m_journal.Note(m_indicator.depth > 0 ? "wait shown" : "wait restored"); };
    List({QStringLiteral("COM1"), QStringLiteral("COM3")});
  }

  void List(const QStringList& names) { m_connection.portNames = names; }
  bool Open() { return OpenPort(m_settings, m_connection, m_environment); }
  bool Connect() { return ConnectPort(m_settings, m_connection, m_environment); }
  bool Reset() { return ResetPort(m_settings, m_connection, m_environment); }
  /// The connection holds this line, opened before the test began.
  std::shared_ptr<ScriptedLine> HoldLine() {
    auto held = std::make_shared<ScriptedLine>(m_journal);
    m_connection.handle = PortHandle(held);
    return held;
  }

  Journal m_journal;
  std::shared_ptr<ScriptedLine> m_line = std::make_shared<ScriptedLine>(m_journal);
  OpenResult m_next;  ///< of opening
  ScriptedOpener m_opener{m_journal};
  test::RecordedMessages m_messages;
  test::CountedIndicator m_indicator;
  PortEnvironment m_environment{m_opener, m_messages, m_indicator};
  SettingsRecord m_settings;
  PortConnection m_connection;
};

TEST_F(OpenPortTest, OpensSetsStateThenTimeouts) {
  EXPECT_TRUE(Open());
  EXPECT_EQ(m_journal.Entries(), (Steps{"open COM3", "get state", "set state", "set time-outs"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
  EXPECT_EQ(m_line->state, (LineState{19200, 7, StopBits::Two, Parity::Odd}));
  EXPECT_EQ(m_line->timeouts, (LineTimeouts{44, 10, 50, 10, 50}));
  EXPECT_EQ(m_connection.lastFailure.kind, LineError::None);
  EXPECT_FALSE(m_connection.connected.IsSet()) << "whoever connects says so, not the opening";
}

TEST_F(OpenPortTest, AnUnknownRateRunsAt9600WithItsOwnTimeouts) {
  m_settings.comBps = QStringLiteral("1000");
  m_settings.portSpeed = QStringLiteral("LOW");
  EXPECT_TRUE(Open());
  EXPECT_EQ(m_line->state.baudRate, 9600U);
  EXPECT_EQ(m_line->timeouts, (LineTimeouts{1296, 15, 75, 15, 75}));
}

TEST_F(OpenPortTest, TheDevicePathFollowsTheNumber) {
  const std::vector<std::pair<QString, std::string>> paths = {
      {QStringLiteral("COM1"), "open COM1"},
      {QStringLiteral("COM9"), "open COM9"},
      {QStringLiteral("COM10"), "open \\\\.\\COM10"},
      {QStringLiteral("COM99"), "open \\\\.\\COM99"},
      {QStringLiteral("COM09"), "open COM09"},
      {QStringLiteral("NONE"), "open NONE"},
      {QStringLiteral("COM100"), "open COM100"},
      {QStringLiteral("COMx"), "open COMx"},
      {QStringLiteral("COM"), "open COM"},
  };
  for (const auto& [name, step] : paths) {
    m_connection.handle = PortHandle();
    m_settings.comPort = name;
    const std::size_t before = m_journal.Entries().size();
    EXPECT_TRUE(Open());
    EXPECT_EQ(m_journal.Entries().at(before), step);
  }
}

TEST_F(OpenPortTest, AFailedOpenLeavesTheInvalidHandle) {
  m_next = {nullptr, {LineError::InUse, QStringLiteral("COM3: in use")}};
  EXPECT_FALSE(Open());
  EXPECT_EQ(m_journal.Entries(), Steps{"open COM3"});
  EXPECT_TRUE(m_connection.handle.IsInvalid());
  EXPECT_FALSE(m_connection.handle.IsOpen());
  EXPECT_FALSE(m_connection.handle.IsNull());
  EXPECT_EQ(m_connection.lastFailure.kind, LineError::InUse);
  EXPECT_EQ(m_connection.lastFailure.reason, QStringLiteral("COM3: in use"));
}

TEST_F(OpenPortTest, AFailedGetStateSaysNothingAndLeavesTheLineOpen) {
  m_line->getStateWorks = false;
  m_line->failure = {LineError::Disconnected, QStringLiteral("gone")};
  EXPECT_FALSE(Open());
  EXPECT_EQ(m_journal.Entries(), (Steps{"open COM3", "get state"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
  EXPECT_EQ(m_connection.lastFailure.reason, QStringLiteral("gone"));
}

TEST_F(OpenPortTest, AFailedSetStateIsToldAndLeavesTheLineOpen) {
  m_line->setStateWorks = false;
  m_line->failure = {LineError::Refused, QStringLiteral("refused")};
  EXPECT_FALSE(Open());
  EXPECT_EQ(m_journal.Entries(),
            (Steps{"open COM3", "get state", "set state", "plain/Failed to set serial port state"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
  EXPECT_EQ(m_connection.lastFailure.kind, LineError::Refused);
}

TEST_F(OpenPortTest, FailedTimeoutsAreToldAndLeaveTheLineOpen) {
  m_line->setTimeoutsWorks = false;
  m_line->failure = {LineError::Other, QStringLiteral("no time-outs")};
  EXPECT_FALSE(Open());
  EXPECT_EQ(m_journal.Entries(), (Steps{"open COM3", "get state", "set state", "set time-outs",
                                        "plain/Failed to set serial port timeouts"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
  EXPECT_EQ(m_connection.lastFailure.reason, QStringLiteral("no time-outs"));
}

TEST_F(OpenPortTest, ALineStillHeldIsReleasedBeforeTheNextIsOpened) {
  const auto held = HoldLine();
  EXPECT_TRUE(Open());
  EXPECT_EQ(m_journal.Entries(), (Steps{"close", "open COM3", "get state", "set state", "set time-outs"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
}

TEST_F(OpenPortTest, OpeningAsksForNoListEntry) {
  List({});
  EXPECT_TRUE(Open());
}

TEST_F(OpenPortTest, ConnectOpensAListedPort) {
  EXPECT_TRUE(Connect());
  EXPECT_EQ(m_connection.handle.Line(), m_line);
}

TEST_F(OpenPortTest, ConnectTouchesNothingForAPortThatIsNotListed) {
  for (const char* name : {"COM2", "com3", "COM33", "COM", "", "COM3 "}) {
    const auto held = HoldLine();
    m_settings.comPort = QString::fromLatin1(name);
    EXPECT_FALSE(Connect());
    EXPECT_EQ(m_connection.handle.Line(), held);
    EXPECT_EQ(m_connection.lastFailure.kind, LineError::NotFound);
  }
  EXPECT_EQ(m_journal.Entries(), Steps{});
}

TEST_F(OpenPortTest, ResetPurgesClosesAndConnectsWithTheIndicatorShownThroughout) {
  HoldLine();
  EXPECT_TRUE(Reset());
  EXPECT_EQ(m_journal.Entries(), (Steps{"wait shown", "cancel", "purge", "close", "open COM3", "get state",
                                        "set state", "set time-outs", "wait restored"}));
  EXPECT_EQ(m_connection.handle.Line(), m_line);
}

TEST_F(OpenPortTest, WithNoPortPresentEveryConnectFails) {
  List({});
  EXPECT_FALSE(Connect());
  EXPECT_TRUE(m_journal.Entries().empty());
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ResetPassesOverAFailedPurge) {
  HoldLine()->purgeWorks = false;
  EXPECT_TRUE(Reset());
  EXPECT_EQ(m_connection.handle.Line(), m_line);
}

TEST_F(OpenPortTest, ResetOfNoPortFails) {
  EXPECT_FALSE(Reset());
  EXPECT_EQ(m_journal.Entries(), (Steps{"wait shown", "wait restored"}));
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ResetOfAFailedOpenFailsAndLeavesNoHandle) {
  m_connection.handle = PortHandle::Invalid();
  EXPECT_FALSE(Reset());
  EXPECT_EQ(m_journal.Entries(), (Steps{"wait shown", "wait restored"}));
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ResetStopsAtAFailedClose) {
  HoldLine()->closeWorks = false;
  EXPECT_FALSE(Reset());
  EXPECT_EQ(m_journal.Entries(), (Steps{"wait shown", "cancel", "purge", "close", "wait restored"}));
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ResetStaysClosedWhenThePortHasGone) {
  HoldLine();
  List({QStringLiteral("COM1")});
  EXPECT_FALSE(Reset());
  EXPECT_EQ(m_journal.Entries(), (Steps{"wait shown", "cancel", "purge", "close", "wait restored"}));
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ResetWhoseOpenFailsLeavesTheInvalidHandle) {
  HoldLine();
  m_next = {nullptr, {LineError::InUse, QStringLiteral("in use")}};
  EXPECT_FALSE(Reset());
  EXPECT_EQ(m_journal.Entries(),
            (Steps{"wait shown", "cancel", "purge", "close", "open COM3", "wait restored"}));
  EXPECT_TRUE(m_connection.handle.IsInvalid());
}

TEST_F(OpenPortTest, ResetShowsTheMessageWhileTheIndicatorIsShown) {
  HoldLine();
  m_line->setStateWorks = false;
  EXPECT_FALSE(Reset());
  const Steps steps = m_journal.Entries();
  ASSERT_GE(steps.size(), 2U);
  EXPECT_EQ(steps[steps.size() - 2], "plain/Failed to set serial port state");
  EXPECT_EQ(steps.back(), "wait restored");
}

TEST_F(OpenPortTest, CloseClosesWithoutAPurge) {
  HoldLine();
  EXPECT_TRUE(ClosePort(m_connection));
  EXPECT_EQ(m_journal.Entries(), Steps{"close"});
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, AFailedCloseIsReportedAndLeavesNoHandle) {
  HoldLine()->closeWorks = false;
  EXPECT_FALSE(ClosePort(m_connection));
  EXPECT_TRUE(m_connection.handle.IsNull());
}

TEST_F(OpenPortTest, ClosingNothingWorks) {
  EXPECT_TRUE(ClosePort(m_connection));
  m_connection.handle = PortHandle::Invalid();
  EXPECT_TRUE(ClosePort(m_connection));
  EXPECT_TRUE(m_connection.handle.IsNull());
  EXPECT_EQ(m_journal.Entries(), Steps{});
}

TEST_F(OpenPortTest, NoneOfThemTouchesTheConnectedMark) {
  m_connection.connected.Update(PortChange::Opened);
  EXPECT_TRUE(Open());
  EXPECT_TRUE(Reset());
  EXPECT_TRUE(ClosePort(m_connection));
  EXPECT_FALSE(Reset());
  EXPECT_TRUE(m_connection.connected.IsSet());
}

TEST_F(OpenPortTest, ReconfigureGivesTheOpenLineItsParameters) {
  const auto held = HoldLine();
  m_settings.portSpeed = QStringLiteral("LOW");
  EXPECT_TRUE(ReconfigurePort(m_settings, m_connection, m_environment));
  // First a read left behind is cancelled.
  EXPECT_EQ(m_journal.Entries(), (Steps{"cancel", "allow", "get state", "set state", "set time-outs"}));
  EXPECT_EQ(held->state.baudRate, 19200U);
  EXPECT_EQ(held->timeouts, TimeoutsOf(m_settings.comBps, m_settings.portSpeed));
}

TEST_F(OpenPortTest, ReconfigureThatFailsLeavesTheLineOpen) {
  const auto held = HoldLine();
  held->setTimeoutsWorks = false;
  held->failure = {LineError::Refused, QStringLiteral("refused")};
  EXPECT_FALSE(ReconfigurePort(m_settings, m_connection, m_environment));
  EXPECT_EQ(m_journal.Entries(), (Steps{"cancel", "allow", "get state", "set state", "set time-outs",
                                        "plain/Failed to set serial port timeouts"}));
  EXPECT_EQ(m_connection.lastFailure.kind, LineError::Refused);
  EXPECT_TRUE(m_connection.handle.IsOpen());
}

TEST_F(OpenPortTest, ReconfigureNeedsAnOpenLine) {
  EXPECT_FALSE(ReconfigurePort(m_settings, m_connection, m_environment));
  m_connection.handle = PortHandle::Invalid();
  EXPECT_FALSE(ReconfigurePort(m_settings, m_connection, m_environment));
  EXPECT_EQ(m_journal.Entries(), Steps());
}

}  // namespace
}  // namespace quarn
