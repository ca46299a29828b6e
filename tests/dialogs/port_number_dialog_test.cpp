#include <QElapsedTimer>

#include "dialogs/port_number_fixture.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

TEST_F(PortNumberDialog, OpensWithTheConnectedPort) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM3");
  program.state.requests.close.Add(Window::PortNumber);
  Open();
  EXPECT_TRUE(program.state.open.Contains(Window::PortNumber));
  EXPECT_FALSE(program.state.requests.close.Contains(Window::PortNumber));
  EXPECT_EQ(Items(), (QStringList{"NONE", "COM3", "COM12"}));
  EXPECT_EQ(Ports().currentText(), "COM3");
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3)  ");
  EXPECT_EQ(window->focusWidget(), &Button(kOkNumber));
  EXPECT_EQ(Control<QLabel>(*window, -1)->text(), "PORT =");
}

TEST_F(PortNumberDialog, SetIsEnabledAtFirstWithTheConnectedPort) {
  Plug("COM3");
  ConnectTo("COM3");
  // It is not shown, so it has had no tick yet.
  window = new CPortNum(nullptr, Context());
  EXPECT_TRUE(Button(kSetNumber).isEnabled());
}

TEST_F(PortNumberDialog, OpensWithNoneWhileNotConnected) {
  Plug("COM3");
  Configure("COM3");
  // It is not shown, so it has had no tick yet.
  window = new CPortNum(nullptr, Context());
  EXPECT_EQ(Ports().currentText(), "NONE");
  EXPECT_FALSE(Button(kSetNumber).isEnabled());
  EXPECT_TRUE(Ports().isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3-NC)  ");
}

TEST_F(PortNumberDialog, WithoutPortsSetTellsSoAndNothingElseChanges) {
  const std::string before = WorkingFile();
  Open();
  EXPECT_FALSE(Ports().isEnabled());
  ASSERT_TRUE(WaitUntil([&] { return Button(kSetNumber).isEnabled(); }));
  Click(kSetNumber);
  EXPECT_EQ(Happened(), QStringList{"error/: Error//Port Sellection Error/No available COM ports detected."});
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortNumberDialog, PickedPortIsConnectedBySet) {
  Plug("COM3");
  Plug("COM4");
  Open();
  Pick("COM4");
  EXPECT_EQ(window->focusWidget(), &Button(kOkNumber));
  EXPECT_TRUE(Button(kSetNumber).isEnabled());
  Click(kSetNumber);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM4")}));
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM4"}}));
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM4)  ");
  EXPECT_TRUE(WaitUntil([&] { return !Button(kSetNumber).isEnabled(); }));
  EXPECT_EQ(Ports().currentText(), "COM4");
}

TEST_F(PortNumberDialog, WhileConnectedTheNextLookEnablesSet) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  Pick("COM4");
  EXPECT_FALSE(Button(kSetNumber).isEnabled());
  EXPECT_TRUE(WaitUntil([&] { return Button(kSetNumber).isEnabled(); }));
}

TEST_F(PortNumberDialog, SetWithNoneDisconnects) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Pick("NONE");
  ASSERT_TRUE(WaitUntil([&] { return Button(kSetNumber).isEnabled(); }));
  Click(kSetNumber);
  EXPECT_EQ(
      Happened(),
      (QStringList{"information/: Information//  \"COM3\" has been disconnected./ COM port is undefined."}));
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "NONE"}}));
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (NONE)  ");
}

TEST_F(PortNumberDialog, PortThatVanishesBetweenChoiceAndSetIsRefused) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  Pick("COM4");
  ASSERT_TRUE(WaitUntil([&] { return Button(kSetNumber).isEnabled(); }));
  Unplug("COM4");
  Click(kSetNumber);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", ".")}));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3)  ");
  EXPECT_EQ(Items(), (QStringList{"NONE", "COM3"}));
  EXPECT_EQ(Ports().currentText(), "COM3");
}

TEST_F(PortNumberDialog, FollowsTheListWithinATick) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  Unplug("COM4");
  program.state.requests.refresh.Add(Window::PortNumber);
  EXPECT_TRUE(WaitUntil([&] { return Items() == QStringList{"NONE", "COM3"}; }));
  EXPECT_EQ(Ports().currentText(), "COM3");
  Unplug("COM3");
  program.state.requests.refresh.Add(Window::PortNumber);
  EXPECT_TRUE(WaitUntil([&] { return Items() == QStringList{"NONE"}; }));
  EXPECT_FALSE(Ports().isEnabled());
}

static_assert(PolledDialog::kTickMs == 100);

TEST_F(PortNumberDialog, LooksTenTimesASecond) {
  Open();
  QElapsedTimer time;
  time.start();
  for (int i = 0; i < 10; ++i) {
    program.state.requests.refresh.Add(Window::PortNumber);
    ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::PortNumber); }));
  }
  // The first tick may come at once, or late on a busy computer.
  EXPECT_GE(time.elapsed(), 700);
  EXPECT_LE(time.elapsed(), 4000);
}

TEST_F(PortNumberDialog, AListChangeFromBeforeItWasOpenedIsSeen) {
  Plug("COM3");
  Configure("COM3");
  program.state.requests.refresh.Add(Window::PortNumber);
  Open();
  ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::PortNumber); }));
  EXPECT_EQ(Ports().currentText(), "COM3");
  EXPECT_TRUE(Button(kSetNumber).isEnabled());
}

TEST_F(PortNumberDialog, PortsThatComeAndGoEnableTheList) {
  Open();
  EXPECT_FALSE(Ports().isEnabled());
  EXPECT_EQ(Items(), QStringList{"NONE"});
  Plug("COM3");
  Configure("COM3");
  program.state.requests.refresh.Add(Window::PortNumber);
  ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::PortNumber); }));
  EXPECT_TRUE(Ports().isEnabled());
  EXPECT_EQ(Items(), (QStringList{"NONE", "COM3"}));
  EXPECT_EQ(Ports().currentText(), "COM3");
  EXPECT_TRUE(Button(kSetNumber).isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3-NC)  ");
  Unplug("COM3");
  program.state.requests.refresh.Add(Window::PortNumber);
  ASSERT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::PortNumber); }));
  EXPECT_FALSE(Ports().isEnabled());
  EXPECT_EQ(Ports().currentText(), "NONE");
}

TEST_F(PortNumberDialog, KeysPickAPort) {
  Plug("COM3");
  Plug("COM4");
  Open();
  Ports().setFocus();
  Press(Qt::Key_Down, Qt::AltModifier);
  QAbstractItemView& list = *Ports().view();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(list.window(), kLongestWaitMs));
  QTest::keyClick(&list, Qt::Key_Down);
  QTest::keyClick(&list, Qt::Key_Return);
  EXPECT_EQ(Ports().currentText(), "COM3");
  EXPECT_EQ(window->focusWidget(), &Button(kOkNumber));
  EXPECT_TRUE(Button(kSetNumber).isEnabled());
  Button(kSetNumber).setFocus();
  Press(Qt::Key_Space);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
}

TEST_F(PortNumberDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  Plug("COM3");
  Configure("COM3");
  Open();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.state.open.Contains(Window::PortNumber));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::TerminalScreen));
}

TEST_F(PortNumberDialog, OkAppliesAChangeThatIsConfirmed) {
  Plug("COM3");
  messages.answers = {true};
  Open();
  Pick("COM3");
  Click(kOkNumber);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), (QStringList{kApplyChoice, "pause 500", ChoiceConnected("COM3")}));
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM3"}}));
  EXPECT_FALSE(program.state.open.Contains(Window::PortNumber));
}

TEST_F(PortNumberDialog, OkLeavesAChangeThatIsNotConfirmed) {
  Plug("COM3");
  const std::string before = WorkingFile();
  messages.answers = {false};
  Open();
  Pick("COM3");
  Click(kOkNumber);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList{kApplyChoice});
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_FALSE(program.connection.connected.IsSet());
}

TEST_F(PortNumberDialog, OkWithNoneDisconnectsWhenConfirmed) {
  Plug("COM3");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Pick("NONE");
  Click(kOkNumber);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened().size(), 2);
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_FALSE(program.connection.connected.IsSet());
}

TEST_F(PortNumberDialog, ClosesByEscapeByItsBoxAndByRequest) {
  for (const int way : {0, 1, 2}) {
    program.state.requests.refresh.Remove(Window::PortNumber);
    Open();
    if (way == 0) Press(Qt::Key_Escape);
    if (way == 1) window->close();
    if (way == 2) program.state.requests.close.Add(Window::PortNumber);
    EXPECT_TRUE(IsGone()) << way;
    EXPECT_FALSE(program.state.open.Contains(Window::PortNumber)) << way;
    EXPECT_FALSE(program.state.requests.close.Contains(Window::PortNumber)) << way;
    EXPECT_EQ(program.state.requests.refresh.Contains(Window::PortNumber), way == 2) << way;
  }
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortNumberDialog, ClosedByRequestTheNextOneShowsTheCurrentPort) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(Ports().currentText(), "NONE");
  program.state.requests.close.Add(Window::PortNumber);
  EXPECT_TRUE(IsGone());
  Open();
  EXPECT_TRUE(WaitUntil([&] { return Ports().currentText() == "COM3"; }));
  EXPECT_FALSE(program.state.requests.refresh.Contains(Window::PortNumber));
}

TEST_F(PortNumberDialog, TabFollowsTheReadingOrder) {
  Plug("COM3");
  Configure("COM3");
  Open();
  ASSERT_TRUE(WaitUntil([&] { return Button(kSetNumber).isEnabled(); }));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Ports());
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kSetNumber));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kOkNumber));
}

TEST_F(PortNumberDialog, NothingIsClippedWithLargerFonts) {
  Plug("COM12");
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNothingClipped(*window);
    for (const int id : {kSetNumber, kOkNumber}) {
      EXPECT_GE(Button(id).width(), Button(id).minimumSizeHint().width());
      EXPECT_GE(Button(id).height(), Button(id).minimumSizeHint().height());
    }
    EXPECT_GE(Ports().width(), Ports().sizeHint().width());
    EXPECT_TRUE(TitleFits(*window, PortNumberTitle({QStringLiteral("COM12"), false, {}}, QString())));
    EXPECT_TRUE(TitleFits(*window, PortNumberTitle({QStringLiteral("COM12"), false, {}},
                                                   QStringLiteral(" Connecting Port ... "))));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    delete window;
  }
}

}  // namespace
}  // namespace quarn::test
