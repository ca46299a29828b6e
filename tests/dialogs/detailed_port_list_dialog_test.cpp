#include "dialogs/serial/detailed_port_list_dialog.h"

#include <QAccessible>

#include "dialogs/detailed_port_list_fixture.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

const QString kApplyQuestion =
    QStringLiteral("question/: Confirmation//Do you want to apply this configuration?/");

TEST_F(DetailedPortListDialog, MarksTheCurrentPort) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM12");
  program.state.requests.close.Add(Window::DetailedPortList);
  Open();
  EXPECT_TRUE(program.state.open.Contains(Window::DetailedPortList));
  EXPECT_FALSE(program.state.requests.close.Contains(Window::DetailedPortList));
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_FALSE(Button(kSetId).isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM12)  ");
}

TEST_F(DetailedPortListDialog, MarksNothingWithoutACurrentPort) {
  Plug("COM3");
  Open();
  EXPECT_EQ(Checked(), QList<int>());
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(DetailedPortListDialog, SetIsForTheConfiguredPortWhileItIsNotConnected) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM3-NC)  ");
  EXPECT_TRUE(Button(kSetId).isEnabled());
  Click(kSetId);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(DetailedPortListDialog, AnAssistiveToolsToggleIsAClick) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  QAccessibleInterface* const choice = QAccessible::queryAccessibleInterface(&Radio(1));
  ASSERT_NE(choice, nullptr);
  ASSERT_NE(choice->actionInterface(), nullptr);
  choice->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(WaitUntil([&] { return Button(kSetId).isEnabled(); })) << "SET is for what has been clicked";
  EXPECT_EQ(Checked(), QList<int>{1});
}

TEST_F(DetailedPortListDialog, ClickedRowIsConnectedBySet) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_TRUE(Button(kSetId).isEnabled());
  WaitForATick();
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_TRUE(Button(kSetId).isEnabled());
  QString title;
  pause.during = [&] { title = window->windowTitle(); };
  Click(kSetId);
  EXPECT_EQ(title, "Quarn - Detailed COM Port List  (COM3)   Connecting Port ... ");
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM4")}));
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM4"}}));
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM4)  ");
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(DetailedPortListDialog, ClickOnADescriptionIsAClickOnItsRow) {
  ListOnly(3);
  Open();
  QTest::mouseClick(&Description(2), Qt::LeftButton);
  EXPECT_EQ(Checked(), QList<int>{2});
  EXPECT_TRUE(Button(kSetId).isEnabled());
}

TEST_F(DetailedPortListDialog, ArrowKeysGoFromRowToRow) {
  ListOnly(3);
  Configure("COM1");
  Open();
  Radio(0).setFocus();
  Press(Qt::Key_Down);
  EXPECT_EQ(Checked(), QList<int>{1});
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kSetId));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kOkId));
}

TEST_F(DetailedPortListDialog, TabReachesTheMarkedRow) {
  ListOnly(3);
  Configure("COM2");
  Open();
  Button(kOkId).setFocus();
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Radio(1));
}

TEST_F(DetailedPortListDialog, ConnectedPortCannotBeSetAgain) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  ClickRadio(0);
  EXPECT_FALSE(Button(kSetId).isEnabled());
  WaitForATick();
  Click(kSetId);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(DetailedPortListDialog, SetDoesNothingForAPortThatHasBeenConnectedMeanwhile) {
  Plug("COM3");
  Configure("COM3");
  Open();
  ASSERT_TRUE(Button(kSetId).isEnabled());
  ConnectTo("COM3");
  const auto line = program.connection.handle.Line();
  // The dialog does not know it yet: the button can still be clicked.
  ASSERT_TRUE(Button(kSetId).isEnabled());
  Click(kSetId);
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(program.connection.handle.Line(), line);
}

TEST_F(DetailedPortListDialog, PortThatVanishesBetweenClickAndSetIsRefused) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM4");
  Click(kSetId);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", "")}));
  EXPECT_EQ(RowsShown(), 1);
  EXPECT_TRUE(program.connection.handle.IsOpen());
}

TEST_F(DetailedPortListDialog, ListChangeShowsTheCurrentPortAgain) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  AskForTheList();  // the click has been handled too
  EXPECT_EQ(Checked(), QList<int>{1});
  AskForTheList();
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_FALSE(Button(kSetId).isEnabled());
  Click(kOkId);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList()) << "the current port is what is selected";
}

TEST_F(DetailedPortListDialog, AClickThatWasNotLookedAtSurvivesAListChange) {
  Plug("COM3");
  Plug("COM4");
  Plug("COM5");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM5");
  AskForTheList();
  EXPECT_EQ(RowsShown(), 2);
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_TRUE(Button(kSetId).isEnabled());
  ClickRadio(1);
  Unplug("COM4");
  AskForTheList();
  EXPECT_EQ(RowsShown(), 1);
  EXPECT_EQ(Checked(), QList<int>()) << "its port is not there any more";
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(DetailedPortListDialog, AClickThatIsSuppressedSelectsNothing) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  program.state.requests.suppressNextClick = true;
  ClickRadio(1);
  EXPECT_FALSE(program.state.requests.suppressNextClick);
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_FALSE(Button(kSetId).isEnabled());
  ClickRadio(1);
  EXPECT_EQ(Checked(), QList<int>{1}) << "one click, no more";
}

TEST_F(DetailedPortListDialog, AListChangeWithASuppressedClickOnlySelectsTheCurrentPort) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  WaitForATick();
  Unplug("COM4");
  program.state.requests.suppressNextClick = true;
  AskForTheList();
  EXPECT_FALSE(program.state.requests.suppressNextClick);
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_EQ(RowsShown(), 2) << "the rows are as they were";
  Click(kOkId);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(DetailedPortListDialog, WithTheLastPortGoneOnlyTheStatusLineIsLeft) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Unplug("COM3");
  AskForTheList();
  EXPECT_EQ(Status(), "No available COM ports detected.");
  EXPECT_EQ(RowsShown(), 0);
  EXPECT_TRUE(BecomesHigh(90)) << OuterSize(*window).height();
}

TEST_F(DetailedPortListDialog, AListChangeIsLeftForTheNextOneWhenItCloses) {
  ListOnly(2);
  Open();
  program.state.requests.refresh.Add(Window::DetailedPortList);
  program.state.requests.close.Add(Window::DetailedPortList);
  EXPECT_TRUE(IsGone());
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::DetailedPortList));
  ListOnly(3);
  Open();
  // Its first tick takes the request.
  EXPECT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::DetailedPortList); }));
  EXPECT_EQ(RowsShown(), 3);
}

TEST_F(DetailedPortListDialog, EachOfThirtyRowsChoosesItsPort) {
  ListOnly(30);
  messages.answers = {true};
  Open();
  for (int i = 0; i < kPortRowCount; ++i) {
    ClickRadio(i);
    EXPECT_EQ(Checked(), QList<int>{i});
    EXPECT_TRUE(Button(kSetId).isEnabled()) << i;
  }
  Click(kOkId);
  EXPECT_TRUE(IsGone());
  // The name has no device.
  EXPECT_EQ(Happened(), (QStringList{kApplyQuestion, "pause 500", ChoiceFailed("COM30", "")}));
}

TEST_F(DetailedPortListDialog, OkWithTheConfiguredPortDoesNotConnectIt) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(Checked(), QList<int>{0});
  Click(kOkId);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_FALSE(program.connection.handle.IsOpen());
}

TEST_F(DetailedPortListDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Radio(0).setFocus();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.state.open.Contains(Window::DetailedPortList));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
}

TEST_F(DetailedPortListDialog, OkAsksBeforeItConnects) {
  Plug("COM3");
  for (const bool yes : {false, true}) {
    messages.answers = {yes};
    Open();
    ClickRadio(0);
    Click(kOkId);
    EXPECT_TRUE(IsGone());
    EXPECT_EQ(Happened(), yes ? (QStringList{kApplyQuestion, "pause 500", ChoiceConnected("COM3")})
                              : QStringList{kApplyQuestion});
    EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", yes ? "COM3" : "NONE"}}));
    EXPECT_EQ(program.connection.connected.IsSet(), yes);
  }
}

TEST_F(DetailedPortListDialog, ClosesByItsBoxAndByRequest) {
  for (const int way : {0, 1, 2}) {
    ListOnly(2);
    Open();
    program.state.requests.refresh.Remove(Window::MainDialog);
    if (way == 0) Press(Qt::Key_Escape);
    if (way == 1) window->close();
    if (way == 2) program.state.requests.close.Add(Window::DetailedPortList);
    EXPECT_TRUE(IsGone()) << way;
    EXPECT_FALSE(program.state.open.Contains(Window::DetailedPortList)) << way;
    EXPECT_FALSE(program.state.requests.close.Contains(Window::DetailedPortList)) << way;
    EXPECT_EQ(program.state.requests.refresh.Contains(Window::MainDialog), way == 2) << way;
  }
}

TEST_F(DetailedPortListDialog, NothingSlipsIntoAConnectThatIsUnderWay) {
  Plug("COM3");
  Plug("COM4");
  Open();
  ClickRadio(0);
  whileShown = [this] {
    ASSERT_TRUE(window);
    program.state.requests.close.Add(Window::DetailedPortList);
    Button(kSetId).click();
    Button(kOkId).click();
    QTest::keyClick(window, Qt::Key_Escape);
    WaitForATick();
    ASSERT_TRUE(window) << "destroyed under its own message";
    EXPECT_TRUE(window->isVisible());
  };
  Click(kSetId);
  EXPECT_TRUE(IsGone()) << "the close was put off, not forgotten";
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
}

TEST_F(DetailedPortListDialog, AfterARefusalTheCurrentPortIsTheOneThatIsSelected) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM4");
  Click(kSetId);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", "")}));
  EXPECT_EQ(Checked(), QList<int>{0});
  WaitForATick();
  EXPECT_EQ(Checked(), QList<int>{0});
  Click(kOkId);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
}

}  // namespace
}  // namespace quarn::test
