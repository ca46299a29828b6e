#include "dialogs/terminal_fixture.h"
#include "support/scripted_line.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

class TerminalRequests : public TerminalFixture {};

TEST_F(TerminalRequests, ClearLogEmptiesLogAndCommandLine) {
  log.AppendLogText("1\r");
  Open();
  Type("abc");
  state.requests.clearLog = true;
  ASSERT_TRUE(Until([this] { return !state.requests.clearLog; }));
  EXPECT_EQ(log.LineCount(), 0);
  EXPECT_TRUE(commandLine.Text().isEmpty());
  EXPECT_EQ(commandLine.CursorPos(), 0);
  EXPECT_EQ(window->RowText(0), QString());
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("N- INS")));
}

TEST_F(TerminalRequests, SendActionActsLikeTheButton) {
  Connect("* -> line \"OK\"");
  settings.enblNull = QStringLiteral("ON");
  Open();
  state.requests.sendAction = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 2; }));
  EXPECT_EQ(instrument->Received(), "\r");
  EXPECT_FALSE(state.requests.sendAction);
}

TEST_F(TerminalRequests, SendLeavesAnEmptyLineUnsentEvenWhereItIsAllowed) {
  Connect("* -> line \"OK\"");
  settings.enblNull = QStringLiteral("ON");
  Open();
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return !state.requests.send; }));
  EXPECT_EQ(log.LineCount(), 0);
  Type("id");
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 2; }));
  EXPECT_EQ(instrument->Received(), "id\r");
}

TEST_F(TerminalRequests, SendWithAFullLogReportsIt) {
  Connect("* -> line \"OK\"");
  log.AppendLogText(QByteArray("x\r").repeated(4000));
  Open();
  Type("id");
  // As when it is sent from the Function Key Table.
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other, kLongestWaitMs));
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return !messages.shown.isEmpty(); }));
  EXPECT_EQ(messages.shown[0], QStringLiteral("transient/Error: No remaining memory for log buffer"));
  EXPECT_TRUE(Until([this] { return window->isActiveWindow(); })) << "the focus does not come back";
}

TEST_F(TerminalRequests, NothingIsSentWhereTheMarkSaysConnectedAndNoLineIsOpen) {
  Open();
  Type("id");
  int shown = 0;
  for (const PortHandle& handle : {PortHandle(), PortHandle::Invalid()}) {
    connection.handle = handle;
    // As after a refused choice, when the former port cannot be opened again either.
    connection.connected.Update(PortChange::FormerChosen);
    ASSERT_TRUE(connection.connected.IsSet());
    Press(Qt::Key_Return);
    EXPECT_EQ(messages.shown.size(), ++shown);
    state.requests.sendAction = true;
    EXPECT_TRUE(Until([&] { return messages.shown.size() == shown + 1; }));
    state.requests.send = true;
    EXPECT_TRUE(Until([&] { return messages.shown.size() == shown + 2; }));
    shown += 2;
  }
  for (const QString& text : messages.shown) {
    EXPECT_TRUE(text.contains(QStringLiteral("COM port is not available."))) << text.toStdString();
  }
  EXPECT_EQ(log.LineCount(), 0);
}

struct KeptOrCleared {
  const char* name;
  bool connected;
  const char* typed;
  const char* rules;
  const char* timeOut;
  QString left;
};

class AutoClear : public TerminalFixture, public ::testing::WithParamInterface<KeptOrCleared> {};

/// The line is cleared after a transaction, also one that failed, and not where there is no port to send to.
TEST_P(AutoClear, FollowsATransactionOnly) {
  const KeptOrCleared& given = GetParam();
  settings.autoClr = QStringLiteral("ON");
  settings.rTimeout = QLatin1String(given.timeOut);
  if (given.connected) Connect(given.rules);
  Open();
  Type(given.typed);
  Press(Qt::Key_Return);
  EXPECT_EQ(commandLine.Text(), given.left);
}

INSTANTIATE_TEST_SUITE_P(
    All, AutoClear,
    testing::Values(KeptOrCleared{"NotConnected", false, "id", "", "OFF", QStringLiteral("id")},
                    KeptOrCleared{"TimeOut", true, "id", "* -> silence", "ON", QString()},
                    KeptOrCleared{"Answered", true, "id", "* -> line \"OK\"", "OFF", QString()}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(TerminalRequests, AnEmptyLineThatIsNotSentKeepsTheCaretWhereClearLeftIt) {
  Connect("* -> line \"OK\"");
  settings.autoClr = QStringLiteral("ON");
  Open();
  Type("abc");
  Click("CLEAR");
  ASSERT_EQ(commandLine.CursorPos(), 3);
  Press(Qt::Key_Return);
  EXPECT_EQ(commandLine.CursorPos(), 3);
  EXPECT_EQ(log.LineCount(), 0);
  settings.enblNull = QStringLiteral("ON");
  Press(Qt::Key_Return);
  EXPECT_EQ(commandLine.CursorPos(), 0);
  EXPECT_EQ(log.LineCount(), 2);
}

TEST_F(TerminalRequests, ALineThatAFullLogDoesNotSendIsClearedTooWithAutoClear) {
  Connect("* -> line \"OK\"");
  settings.autoClr = QStringLiteral("ON");
  log.AppendLogText(QByteArray("x\r").repeated(4000));
  Open();
  Type("id");
  Press(Qt::Key_Return);
  EXPECT_EQ(messages.shown, QStringList{"transient/Error: No remaining memory for log buffer"});
  EXPECT_EQ(commandLine.Text(), QString());
}

TEST_F(TerminalRequests, SendKeepsTheLineAndAsksForNoPort) {
  Connect("* -> line \"OK\"");
  settings.autoClr = QStringLiteral("ON");
  Open();
  Type("id");
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 2; }));
  EXPECT_EQ(commandLine.Text(), QStringLiteral("id"));
  connection.connected.Update(PortChange::Closed);
  connection.handle = PortHandle();
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 5; }));
  EXPECT_EQ(window->RowText(3), QStringLiteral("Error: Received Invalid Data\r"));
  EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(TerminalRequests, NothingIsSentOnALineThatHasDied) {
  Connect("* -> line \"OK\"");
  Open();
  Type("id");
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 2; }));
  static Journal calls;
  const auto dead = std::make_shared<ScriptedLine>(calls);
  dead->lost = true;
  connection.handle = PortHandle(dead);
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return messages.shown.size() == 1; }));
  state.requests.sendAction = true;
  ASSERT_TRUE(Until([this] { return messages.shown.size() == 2; }));
  EXPECT_TRUE(messages.shown.last().contains(QStringLiteral("COM port is not available.")))
      << messages.shown.last().toStdString();
  EXPECT_EQ(log.LineCount(), 2) << "the answer before would have been shown once more";
}

TEST_F(TerminalRequests, ClosingComesLast) {
  Connect("* -> line \"OK\"");
  Open();
  Type("id");
  state.requests.close.Add(Window::TerminalScreen);
  state.requests.send = true;
  ASSERT_TRUE(Until([this] { return window.isNull(); }));
  EXPECT_EQ(instrument->Received(), "id\r");
  EXPECT_EQ(log.LineCount(), 2);
}

TEST_F(TerminalRequests, AFunctionKeyIsLoadedAndAppendedWithCtrl) {
  settings.mem[4] = QStringLiteral("five");
  Open();
  state.requests.functionKey = 4;
  ASSERT_TRUE(Until([this] { return commandLine.Text() == u"five"; }));
  state.requests.functionKeyCtrl = true;
  state.requests.functionKey = 4;
  ASSERT_TRUE(Until([this] { return commandLine.Text() == u"fivefive"; }));
  EXPECT_FALSE(state.requests.functionKey);
}

TEST_F(TerminalRequests, RefreshReadsEverySettingAgain) {
  log.AppendLogText("1\r");
  Open();
  settings.lineNum = QStringLiteral("ON");
  settings.inputMax = QStringLiteral("M");
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return !state.requests.refresh.Contains(Window::TerminalScreen); }));
  EXPECT_EQ(window->RowText(0), QStringLiteral("   1|  1\r"));
  EXPECT_TRUE(Until([this] { return OuterSize(*window).width() == 570; }));
  EXPECT_TRUE(window->windowTitle().contains(QStringLiteral("  M- INS")));
  EXPECT_EQ(window->findChild<StaticText*>(QStringLiteral("commandLine"))->x(), 87);
  EXPECT_EQ(Button("F 1").geometry(), QRect(45, 628, 70, 22));
}

TEST_F(TerminalRequests, FocusIsTaken) {
  Open();
  Button("F 1").setFocus();
  state.requests.focus = true;
  ASSERT_TRUE(Until([this] { return !state.requests.focus; }));
  EXPECT_TRUE(Until([this] { return Button("SEND").hasFocus(); }));
}

TEST_F(TerminalRequests, SeveralRequestsActInTheirOrder) {
  Connect("* -> line \"OK\"");
  settings.mem[0] = QStringLiteral("mem");
  Open();
  Type("typed");
  // The log and the line are emptied first, then the stored command is loaded, then the line is sent.
  state.requests.send = true;
  state.requests.functionKey = 0;
  state.requests.clearLog = true;
  ASSERT_TRUE(Until([this] { return log.LineCount() == 2; }));
  EXPECT_EQ(instrument->Received(), "mem\r");
}

TEST_F(TerminalRequests, TheSendActionComesAfterFocusAndEmptyingAndBeforeTheRest) {
  settings.mem[0] = QStringLiteral("mem");
  log.AppendLogText("1\r");
  Open();
  Type("typed");
  bool told = false;
  // There is no port, so sending shows a message.
  messages.whileShown = [&] {
    told = true;
    EXPECT_FALSE(state.requests.focus);
    EXPECT_FALSE(state.requests.clearLog);
    EXPECT_EQ(log.LineCount(), 0);
    EXPECT_EQ(commandLine.Text(), QString());
    EXPECT_FALSE(state.requests.sendAction);
    EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
    EXPECT_TRUE(state.requests.functionKey);
  };
  state.requests.focus = true;
  state.requests.clearLog = true;
  state.requests.sendAction = true;
  state.requests.refresh.Add(Window::TerminalScreen);
  state.requests.functionKey = 0;
  ASSERT_TRUE(Until([this] { return commandLine.Text() == u"mem"; }));
  EXPECT_TRUE(told);
}

TEST_F(TerminalRequests, TheRefreshComesBeforeTheFunctionKey) {
  settings.mem[0] = QStringLiteral("mem");
  Open();
  settings.inputMax = QStringLiteral("M");
  QStringList atRefresh;
  QObject::connect(window, &QWidget::windowTitleChanged, window,
                   [&] { atRefresh.append(commandLine.Text()); });
  state.requests.functionKey = 0;
  state.requests.refresh.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return commandLine.Text() == u"mem"; }));
  EXPECT_EQ(atRefresh, QStringList{QString()});
}

TEST_F(TerminalRequests, CloseKeepsLogAndCommandLineForTheNextTime) {
  log.AppendLogText("1\r");
  Open();
  Type("abc");
  ASSERT_TRUE(FrameIsThere(*window));
  window->move(40, 30);
  ASSERT_TRUE(StandsAt(*window, [] { return QPoint(40, 30); }));
  state.requests.close.Add(Window::TerminalScreen);
  ASSERT_TRUE(Until([this] { return window.isNull(); }));
  EXPECT_FALSE(state.open.Contains(Window::TerminalScreen));
  EXPECT_FALSE(state.requests.close.Contains(Window::TerminalScreen));
  EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
  EXPECT_TRUE(state.requests.refresh.Contains(Window::MainDialog));
  Open();
  EXPECT_TRUE(StandsAt(*window, [] { return QPoint(40, 30); }));
  EXPECT_EQ(window->RowText(0), QStringLiteral("1\r"));
  EXPECT_EQ(commandLine.Text(), QStringLiteral("abc"));
}

TEST_F(TerminalRequests, TheCloseBoxClosesTheSameWay) {
  Open();
  window->close();
  EXPECT_FALSE(state.open.Contains(Window::TerminalScreen));
  EXPECT_TRUE(state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_FALSE(savedRect.isNull());
  EXPECT_TRUE(Until([this] { return window.isNull(); }));
}

TEST_F(TerminalRequests, AMessageOfTheWindowHoldsTheRequestsBack) {
  Open();
  Type("id");
  messages.whileShown = [this] {
    state.requests.close.Add(Window::TerminalScreen);
    state.requests.clearLog = true;
    QTest::qWait(3 * PolledDialog::kTickMs);
    ASSERT_TRUE(window);
    EXPECT_TRUE(state.requests.clearLog);
  };
  Press(Qt::Key_Return);  // there is no port
  EXPECT_EQ(messages.shown.size(), 1);
  messages.whileShown = nullptr;
  EXPECT_TRUE(Until([this] { return window.isNull(); }));
  EXPECT_TRUE(commandLine.Text().isEmpty());
}

TEST_F(TerminalRequests, TheCursorBlinksInTheForegroundOnly) {
  Open();
  Type("ab");
  ASSERT_TRUE(Until([this] { return DisplayedCommand() == u"ab"; }));
  ASSERT_TRUE(Until([this] { return DisplayedCommand() == u"ab|"; }));
  QDialog other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other, kLongestWaitMs));
  const QString shown = DisplayedCommand();
  bool changed = false;
  const auto watch = [&] { return changed = changed || DisplayedCommand() != shown; };
  EXPECT_FALSE(Until(watch, 1500));
}

TEST_F(TerminalRequests, FocusIsTakenFromAnotherWindow) {
  Open();
  QDialog other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  state.requests.focus = true;
  EXPECT_TRUE(Until([this] { return window->isActiveWindow(); }));
}

TEST_F(TerminalRequests, TheLineThatIsClearedIsSeenEmptyInTheBackgroundToo) {
  Open();
  Type("ab");
  ASSERT_TRUE(Until([this] { return DisplayedCommand().startsWith(u"ab"); }));
  QDialog other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  state.requests.clearLog = true;
  EXPECT_TRUE(Until([this] { return !DisplayedCommand().contains(u"ab"); }));
}

}  // namespace
}  // namespace quarn::test
