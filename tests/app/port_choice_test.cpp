#include "serial/dialogs/port_choice.h"

#include "app/port_dialog_fixture.h"

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
    return requests.mainRefresh && requests.terminalRefresh && requests.portNumberRefresh &&
           requests.detailedListRefresh && requests.portSettingsRefresh;
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
  EXPECT_EQ(Happened(), (QStringList{kConnecting, "pause 500", "title ", ChoiceConnected("COM12")}));
  EXPECT_EQ(depth, 1);
  EXPECT_EQ(indicator.depth, 0);
  EXPECT_TRUE(program.connection.connected);
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

TEST_F(PortChoiceTest, EverythingIsSoWhenTheMessageSaysSo) {
  Plug("COM4");
  whileShown = [this] {
    EXPECT_TRUE(program.connection.connected);
    EXPECT_EQ(program.state.currentPortName, "COM4");
    EXPECT_EQ(indicator.depth, 0);
  };
  EXPECT_TRUE(Choose("COM4"));
}

TEST_F(PortChoiceTest, PortThatHasVanishedFailsAndTheFormerOneIsOpenAgain) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  const std::string before = WorkingFile();
  Unplug("COM4");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(Happened(),
            (QStringList{kConnecting, "pause 500", "title ", ChoiceFailed("COM4", "."), "title "}));
  EXPECT_TRUE(program.connection.connected);
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
  EXPECT_EQ(program.settings.comPort, "COM3");
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_TRUE(AllRefreshesAreRaised());
}

TEST_F(PortChoiceTest, CountsAsConnectedEvenWhenTheFormerPortIsGoneToo) {
  Configure("COM3");
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_TRUE(program.connection.connected);
  EXPECT_FALSE(program.connection.handle.IsOpen());
  EXPECT_EQ(program.state.currentPortName, "COM3");
}

TEST_F(PortChoiceTest, FailureFromNoPortLeavesNone) {
  const std::string before = WorkingFile();
  EXPECT_FALSE(Choose("COM4"));
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_TRUE(program.connection.connected);
  EXPECT_EQ(WorkingFile(), before);
}

TEST_F(PortChoiceTest, NoneWhileConnectedDisconnects) {
  Plug("COM3");
  ConnectTo("COM3");
  ChooseNoPort(Context());
  EXPECT_EQ(
      Happened(),
      (QStringList{"information/: Information//  \"COM3\" has been disconnected./ COM port is undefined."}));
  EXPECT_FALSE(program.connection.connected);
  EXPECT_TRUE(program.connection.handle.IsNull());
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_EQ(program.settings.comPort, "NONE");
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "NONE"}}));
  EXPECT_TRUE(AllRefreshesAreRaised());
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
