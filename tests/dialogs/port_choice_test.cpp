#include "dialogs/serial/port_choice.h"

#include "dialogs/port_dialog_fixture.h"
#include "support/scripted_line.h"

namespace quarn::test {
namespace {

const QString kConnecting = QStringLiteral("title  Connecting Port ... ");

class PortChoiceTest : public PortDialogTest {
 protected:
  bool Choose(const QString& port, FailureSentence sentence = FailureSentence::WithFullStop) {
    return ConnectToChosenPort(Context(), port, sentence, [this](const QString& status) {
      journal.append(QStringLiteral("title ") + status);
    });
  }
  bool AllRefreshesAreRaised() {
    const WindowRequests& requests = program.state.requests;
    return requests.refresh.Contains(Window::MainDialog) &&
           requests.refresh.Contains(Window::TerminalScreen) &&
           requests.refresh.Contains(Window::PortNumber) &&
           requests.refresh.Contains(Window::DetailedPortList) &&
           requests.refresh.Contains(Window::PortSettings);
  }
};

TEST_F(PortChoiceTest, ConnectsTellsAndRemembers) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM3");
  const auto former = program.connection.handle.Line();
  int depth = 0;
  pause.during = [&] { depth = indicator.depth; };
  EXPECT_TRUE(Choose("COM12"));
  EXPECT_EQ(Happened(),
            (QStringList{kConnecting, "pause 500", "title ", ChoiceConnected("COM12"), "title "}));
  EXPECT_EQ(depth, 1);
  EXPECT_EQ(indicator.depth, 0);
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_NE(program.connection.handle.Line(), former);
  EXPECT_EQ(program.state.currentPortName, "COM12");
  EXPECT_EQ(program.settings.comPort, "COM12");
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM12"}}));
  EXPECT_TRUE(AllRefreshesAreRaised());
}

TEST_F(PortChoiceTest, LineIsStillTheFormerOneDuringThePause) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  bool open = false;
  pause.during = [&] { open = program.connection.handle.IsOpen(); };
  Choose("COM4");
  EXPECT_TRUE(open);
}

TEST_F(PortChoiceTest, ThePortIsTakenWhenItsMessageIsGone) {
  Plug("COM4");
  const std::string before = WorkingFile();
  whileShown = [&] {
    EXPECT_TRUE(program.connection.connected.IsSet());
    EXPECT_TRUE(program.connection.handle.IsOpen());
    EXPECT_EQ(program.state.currentPortName, "NONE");
    EXPECT_EQ(program.settings.comPort, "NONE");
    EXPECT_EQ(WorkingFile(), before);
    EXPECT_TRUE(program.state.portBeingChanged);
  };
  EXPECT_TRUE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "COM4");
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM4"}}));
  EXPECT_FALSE(program.state.portBeingChanged);
}

TEST_F(PortChoiceTest, TheFormerPortIsOpenedWhenTheMessageOfAFailureIsGone) {
  Plug("COM3");
  ConnectTo("COM3");
  whileShown = [this] {
    EXPECT_FALSE(program.connection.handle.IsOpen());
    EXPECT_EQ(program.state.currentPortName, "COM3");
    EXPECT_TRUE(program.state.portBeingChanged);
  };
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_FALSE(program.state.portBeingChanged);
}

TEST_F(PortChoiceTest, TheWaitIsShownThroughout) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  QStringList depths;
  pause.during = [&] { depths.append(QStringLiteral("pause at %1").arg(indicator.depth)); };
  whileShown = [&] { depths.append(QStringLiteral("box at %1").arg(indicator.depth)); };
  const auto title = [&](const QString& status) {
    depths.append(QStringLiteral("title%1 at %2").arg(status.trimmed()).arg(indicator.depth));
  };
  EXPECT_TRUE(ConnectToChosenPort(Context(), QStringLiteral("COM4"), FailureSentence::WithFullStop, title));
  EXPECT_EQ(depths, (QStringList{"titleConnecting Port ... at 1", "pause at 1", "title at 1", "box at 1",
                                 "title at 1"}));
  depths.clear();
  EXPECT_FALSE(ConnectToChosenPort(Context(), QStringLiteral("COM9"), FailureSentence::WithFullStop, title));
  EXPECT_EQ(depths, (QStringList{"titleConnecting Port ... at 1", "pause at 1", "box at 1", "title at 1"}));
  EXPECT_EQ(indicator.depth, 0);
}

TEST_F(PortChoiceTest, TheWaitIsShownAtBothOpenings) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  // Opens as usual, and notes how often the wait is shown then.
  Journal paths;
  ScriptedOpener opener(paths);
  QStringList opened;
  opener.open = [&](const QString& path) -> OpenResult {
    opened.append(QStringLiteral("%1 at %2").arg(path).arg(indicator.depth));
    if (path == u"COM4") return {nullptr, {LineError::InUse, {}}};
    return program.opener->Open(path);
  };
  const DialogContext context{program.settings, program.workingSettingsFile, program.connection,
                              program.state,    *program.portSource,         {opener, messages, indicator},
                              std::ref(pause)};
  EXPECT_FALSE(ConnectToChosenPort(context, QStringLiteral("COM4"), FailureSentence::WithFullStop,
                                   [](const QString& /*status*/) {}));
  EXPECT_EQ(opened, (QStringList{"COM4 at 1", "COM3 at 1"}));
  EXPECT_EQ(indicator.depth, 0);
}

TEST_F(PortChoiceTest, PortThatHasVanishedFailsAndTheFormerOneIsOpenAgain) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  Unplug("COM4");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(Happened(), (QStringList{kConnecting, "pause 500", ChoiceFailed("COM4", "."), "title "}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
  EXPECT_EQ(program.settings.comPort, "COM3");
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_TRUE(AllRefreshesAreRaised());
}

TEST_F(PortChoiceTest, CountsAsConnectedEvenWhenTheFormerPortIsGoneToo) {
  Configure("COM3");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
}

TEST_F(PortChoiceTest, FailureFromNoPortLeavesNone) {
  const std::string before = WorkingFile();
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(WorkingFile(), before);
}

/// After NO to connecting a port again, the settings in force still name it.
TEST_F(PortChoiceTest, FailureAfterNoOpensNothing) {
  Plug("COM3");
  Configure("COM3");
  program.state.currentPortName = QStringLiteral("NONE");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_FALSE(program.connection.handle.IsOpen());
}

TEST_F(PortChoiceTest, NoneWhileConnectedDisconnects) {
  Plug("COM3");
  ConnectTo("COM3");
  ChooseNoPort(Context());
  EXPECT_EQ(
      Happened(),
      (QStringList{"information/: Information//  \"COM3\" has been disconnected./ COM port is undefined."}));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsNull());
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_EQ(program.settings.comPort, "NONE");
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "NONE"}}));
  EXPECT_TRUE(AllRefreshesAreRaised());
}

TEST_F(PortChoiceTest, NoneIsTakenWhenItsMessageIsGone) {
  Plug("COM3");
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  whileShown = [&] {
    EXPECT_TRUE(program.connection.handle.IsNull());
    EXPECT_EQ(program.state.currentPortName, "COM3");
    EXPECT_EQ(program.settings.comPort, "COM3");
    EXPECT_EQ(WorkingFile(), before);
    EXPECT_TRUE(program.state.portBeingChanged);
  };
  ChooseNoPort(Context());
  EXPECT_EQ(Happened().size(), 1);
  EXPECT_FALSE(program.state.portBeingChanged);
}

TEST_F(PortChoiceTest, NoneWhileNotConnectedForgetsThePort) {
  WriteSettings(program.workingSettingsFile, {{"COM_PORT", "COM3"}});
  Configure("COM3");
  ChooseNoPort(Context());
  EXPECT_EQ(Happened(), QStringList{"information/: Information//COM port settings have become undefined./"});
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "NONE"}}));
  EXPECT_TRUE(AllRefreshesAreRaised());
}

}  // namespace
}  // namespace quarn::test
