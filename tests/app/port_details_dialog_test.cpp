#include "serial/dialogs/port_details_dialog.h"

#include "app/port_details_fixture.h"

namespace quarn::test {
namespace {

const QString kApplyQuestion =
    QStringLiteral("question/: Confirmation//Do you want to apply this configuration?/");

TEST_F(PortDetailsDialog, MarksTheCurrentPort) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM12");
  program.state.requests.detailedListClose = true;
  Open();
  EXPECT_TRUE(program.state.open.detailedPortList);
  EXPECT_FALSE(program.state.requests.detailedListClose);
  EXPECT_EQ(Checked(), QList<int>{1});
  EXPECT_FALSE(Button(kSetId).isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM12)  ");
}

TEST_F(PortDetailsDialog, MarksNothingWithoutACurrentPort) {
  Plug("COM3");
  Open();
  EXPECT_EQ(Checked(), QList<int>());
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(PortDetailsDialog, SetIsForTheConfiguredPortWhileItIsNotConnected) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(window->windowTitle(), "Quarn - Detailed COM Port List  (COM3-NC)  ");
  EXPECT_TRUE(Button(kSetId).isEnabled());
  Click(kSetId);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
  EXPECT_FALSE(Button(kSetId).isEnabled());
}

TEST_F(PortDetailsDialog, ClickedRowIsConnectedBySet) {
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

TEST_F(PortDetailsDialog, ClickOnADescriptionIsAClickOnItsRow) {
  ListOnly(3);
  Open();
  QTest::mouseClick(&Description(2), Qt::LeftButton);
  EXPECT_EQ(Checked(), QList<int>{2});
  EXPECT_TRUE(Button(kSetId).isEnabled());
}

TEST_F(PortDetailsDialog, ArrowKeysGoFromRowToRow) {
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

TEST_F(PortDetailsDialog, ConnectedPortCannotBeSetAgain) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  ClickRadio(0);
  EXPECT_FALSE(Button(kSetId).isEnabled());
  WaitForATick();
  Click(kSetId);
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortDetailsDialog, PortThatVanishesBetweenClickAndSetIsRefused) {
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

TEST_F(PortDetailsDialog, ListChangeShowsTheCurrentPortAgain) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  ClickRadio(1);
  Unplug("COM4");
  program.state.requests.detailedListRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return RowsShown() == 1; }));
  EXPECT_EQ(Checked(), QList<int>{0});
  EXPECT_FALSE(Button(kSetId).isEnabled());
  Unplug("COM3");
  program.state.requests.detailedListRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return Status() == "No available COM ports detected."; }));
  EXPECT_TRUE(BecomesHigh(90)) << OuterSize(*window).height();
}

TEST_F(PortDetailsDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Radio(0).setFocus();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.state.open.detailedPortList);
  EXPECT_TRUE(program.state.requests.mainRefresh);
}

TEST_F(PortDetailsDialog, OkAsksBeforeItConnects) {
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
    EXPECT_EQ(program.connection.connected, yes);
  }
}

TEST_F(PortDetailsDialog, ClosesByItsBoxAndByRequest) {
  for (const int way : {0, 1, 2}) {
    ListOnly(2);
    Open();
    program.state.requests.mainRefresh = false;
    if (way == 0) Press(Qt::Key_Escape);
    if (way == 1) window->close();
    if (way == 2) program.state.requests.detailedListClose = true;
    EXPECT_TRUE(IsGone()) << way;
    EXPECT_FALSE(program.state.open.detailedPortList) << way;
    EXPECT_FALSE(program.state.requests.detailedListClose) << way;
    EXPECT_EQ(program.state.requests.mainRefresh, way == 2) << way;
  }
}

TEST_F(PortDetailsDialog, NothingSlipsIntoAConnectThatIsUnderWay) {
  Plug("COM3");
  Plug("COM4");
  Open();
  ClickRadio(0);
  whileShown = [this] {
    ASSERT_TRUE(window);
    program.state.requests.detailedListClose = true;
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

}  // namespace
}  // namespace quarn::test
