#include "serial/dialogs/port_number_dialog.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QTimer>

#include "app/port_dialog_fixture.h"
#include "ui/held_pause.h"
#include "ui/window_messages.h"

namespace quarn::test {
namespace {

constexpr int kPorts = 1005;
constexpr int kSet = 1006;
constexpr int kOk = 1001;

const QString kApplyChoice = QStringLiteral(
    "yes or no/: Confirmation//Setting has been changed./Is it OK to apply this configuration?");

class PortNumberDialog : public PortDialogTest {
 protected:
  CPortNum& Open() { return Show<CPortNum>(); }
  QComboBox& Ports() { return *Control<QComboBox>(*window, kPorts); }
  QStringList Items() {
    QStringList items;
    for (int i = 0; i < Ports().count(); ++i) items.append(Ports().itemText(i));
    return items;
  }
  /// Picks the item in the open list, as a person does with the mouse.
  void Pick(const QString& item) {
    QTest::mouseClick(&Ports(), Qt::LeftButton);
    QAbstractItemView& view = *Ports().view();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.window()));
    // The list takes the release of the very click that opened it for no choice.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    const QModelIndex index = view.model()->index(Ports().findText(item), 0);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(index).center());
    ASSERT_EQ(Ports().currentText(), item);
  }
};

TEST_F(PortNumberDialog, OpensWithTheConnectedPort) {
  Plug("COM3");
  Plug("COM12");
  ConnectTo("COM3");
  program.state.requests.portNumberClose = true;
  program.state.requests.portNumberRefresh = true;
  Open();
  EXPECT_TRUE(program.state.open.portNumber);
  EXPECT_FALSE(program.state.requests.portNumberClose);
  EXPECT_EQ(Items(), (QStringList{"NONE", "COM3", "COM12"}));
  EXPECT_EQ(Ports().currentText(), "COM3");
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3)  ");
  EXPECT_EQ(window->focusWidget(), &Button(kOk));
  EXPECT_EQ(Control<QLabel>(*window, -1)->text(), "PORT =");
}

TEST_F(PortNumberDialog, OpensWithNoneWhileNotConnected) {
  Plug("COM3");
  Configure("COM3");
  Open();
  EXPECT_EQ(Ports().currentText(), "NONE");
  EXPECT_FALSE(Button(kSet).isEnabled());
  EXPECT_TRUE(Ports().isEnabled());
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM3-NC)  ");
}

TEST_F(PortNumberDialog, WithoutPortsSetTellsSoAndNothingElseChanges) {
  const std::string before = WorkingFile();
  Open();
  EXPECT_FALSE(Ports().isEnabled());
  ASSERT_TRUE(QTest::qWaitFor([&] { return Button(kSet).isEnabled(); }));
  Click(kSet);
  EXPECT_EQ(Happened(), QStringList{"error/: Error//Port Sellection Error/No available COM ports detected."});
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_FALSE(program.connection.connected);
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_TRUE(window->isVisible());
}

TEST_F(PortNumberDialog, PickedPortIsConnectedBySet) {
  Plug("COM3");
  Plug("COM4");
  Open();
  Pick("COM4");
  EXPECT_EQ(window->focusWidget(), &Button(kOk));
  EXPECT_TRUE(Button(kSet).isEnabled());
  Click(kSet);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM4")}));
  EXPECT_TRUE(program.connection.handle.IsOpen());
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM4"}}));
  EXPECT_EQ(window->windowTitle(), "Quarn - COM Port Number (COM4)  ");
  ASSERT_TRUE(QTest::qWaitFor([&] { return !program.state.requests.portNumberRefresh; }));
  WaitForATick();
  EXPECT_EQ(Ports().currentText(), "COM4");
  EXPECT_FALSE(Button(kSet).isEnabled());
}

TEST_F(PortNumberDialog, WhileConnectedTheNextLookEnablesSet) {
  Plug("COM3");
  Plug("COM4");
  ConnectTo("COM3");
  Open();
  Pick("COM4");
  EXPECT_FALSE(Button(kSet).isEnabled());
  EXPECT_TRUE(QTest::qWaitFor([&] { return Button(kSet).isEnabled(); }));
}

TEST_F(PortNumberDialog, SetWithNoneDisconnects) {
  Plug("COM3");
  ConnectTo("COM3");
  Open();
  Pick("NONE");
  ASSERT_TRUE(QTest::qWaitFor([&] { return Button(kSet).isEnabled(); }));
  Click(kSet);
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
  ASSERT_TRUE(QTest::qWaitFor([&] { return Button(kSet).isEnabled(); }));
  Unplug("COM4");
  Click(kSet);
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceFailed("COM4", ".")}));
  EXPECT_TRUE(program.connection.connected);
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
  program.state.requests.portNumberRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return Items() == QStringList{"NONE", "COM3"}; }));
  EXPECT_EQ(Ports().currentText(), "COM3");
  Unplug("COM3");
  program.state.requests.portNumberRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return Items() == QStringList{"NONE"}; }));
  EXPECT_FALSE(Ports().isEnabled());
}

TEST_F(PortNumberDialog, OkWithoutAChangeClosesWithoutAQuestion) {
  Plug("COM3");
  Configure("COM3");
  Open();
  Press(Qt::Key_Return);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(program.state.open.portNumber);
  EXPECT_TRUE(program.state.requests.mainRefresh);
  EXPECT_TRUE(program.state.requests.terminalRefresh);
}

TEST_F(PortNumberDialog, OkAppliesAChangeThatIsConfirmed) {
  Plug("COM3");
  messages.answers = {true};
  Open();
  Pick("COM3");
  Click(kOk);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), (QStringList{kApplyChoice, "pause 500", ChoiceConnected("COM3")}));
  EXPECT_EQ(WorkingFile(), FileWith({{"COM_PORT", "COM3"}}));
  EXPECT_FALSE(program.state.open.portNumber);
}

TEST_F(PortNumberDialog, OkLeavesAChangeThatIsNotConfirmed) {
  Plug("COM3");
  const std::string before = WorkingFile();
  messages.answers = {false};
  Open();
  Pick("COM3");
  Click(kOk);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened(), QStringList{kApplyChoice});
  EXPECT_EQ(WorkingFile(), before);
  EXPECT_FALSE(program.connection.connected);
}

TEST_F(PortNumberDialog, OkWithNoneDisconnectsWhenConfirmed) {
  Plug("COM3");
  ConnectTo("COM3");
  messages.answers = {true};
  Open();
  Pick("NONE");
  Click(kOk);
  EXPECT_TRUE(IsGone());
  EXPECT_EQ(Happened().size(), 2);
  EXPECT_EQ(program.state.currentPortName, "NONE");
  EXPECT_FALSE(program.connection.connected);
}

TEST_F(PortNumberDialog, ClosesByEscapeByItsBoxAndByRequest) {
  for (const int way : {0, 1, 2}) {
    Open();
    if (way == 0) Press(Qt::Key_Escape);
    if (way == 1) window->close();
    if (way == 2) program.state.requests.portNumberClose = true;
    EXPECT_TRUE(IsGone()) << way;
    EXPECT_FALSE(program.state.open.portNumber) << way;
    EXPECT_FALSE(program.state.requests.portNumberClose) << way;
  }
  EXPECT_EQ(Happened(), QStringList());
}

TEST_F(PortNumberDialog, NothingSlipsIntoAConnectThatIsUnderWay) {
  Plug("COM3");
  Open();
  Pick("COM3");
  whileShown = [this] {
    ASSERT_TRUE(window);
    program.state.requests.portNumberClose = true;
    Button(kSet).click();
    Button(kOk).click();
    window->close();
    WaitForATick();
    ASSERT_TRUE(window) << "destroyed under its own message";
    EXPECT_TRUE(window->isVisible());
  };
  Click(kSet);
  EXPECT_TRUE(IsGone()) << "the close was put off, not forgotten";
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
  EXPECT_FALSE(program.state.open.portNumber);
}

TEST_F(PortNumberDialog, TitleTellsWhileItConnects) {
  Plug("COM3");
  Open();
  Pick("COM3");
  QString title;
  pause.during = [&] { title = window->windowTitle(); };
  Click(kSet);
  EXPECT_EQ(title, "Quarn - (NONE)   Connecting Port ... ");
}

TEST_F(PortNumberDialog, ASecondClickDuringTheWaitDoesNothing) {
  Plug("COM3");
  HeldPause held;
  DialogContext context{program.settings,
                        program.workingSettingsFile,
                        program.connection,
                        program.state,
                        *program.portSource,
                        program.Environment(),
                        held};
  window = new CPortNum(nullptr, context);
  ShowActive(*window);
  Pick("COM3");
  QWindow* handle = window->windowHandle();
  const QPoint place = Button(kSet).geometry().center();
  QMetaObject::invokeMethod(
      window, [&] { QTest::mouseClick(handle, Qt::LeftButton, {}, place); }, Qt::QueuedConnection);
  Click(kSet);
  QTest::qWait(300);
  EXPECT_EQ(Happened(), QStringList{ChoiceConnected("COM3")});
}

TEST_F(PortNumberDialog, ItsMessageIsInFrontOfItAndOutlivedByIt) {
  Plug("COM3");
  WindowMessages boxes;
  const DialogContext context{program.settings,
                              program.workingSettingsFile,
                              program.connection,
                              program.state,
                              *program.portSource,
                              {*program.opener, boxes, indicator},
                              pause};
  window = new CPortNum(nullptr, context);
  ShowActive(*window);
  Pick("COM3");
  bool seen = false;
  QTimer::singleShot(0, qApp, [&] {
    QWidget* box = QApplication::activeModalWidget();
    ASSERT_NE(box, nullptr);
    seen = box->parentWidget() == window;
    program.state.requests.portNumberClose = true;
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, Button(kSet).geometry().center());
    QTest::qWait(2 * PolledDialog::kTickMs);
    ASSERT_TRUE(window);
    QTest::keyClick(box, Qt::Key_Return);
  });
  Click(kSet);
  EXPECT_TRUE(seen);
  EXPECT_EQ(Happened(), QStringList{"pause 500"});
  EXPECT_TRUE(IsGone()) << "the request was put off, not forgotten";
}

TEST_F(PortNumberDialog, TabFollowsTheReadingOrder) {
  Plug("COM3");
  Configure("COM3");
  Open();
  ASSERT_TRUE(QTest::qWaitFor([&] { return Button(kSet).isEnabled(); }));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Ports());
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kSet));
  Press(Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget(), &Button(kOk));
}

TEST_F(PortNumberDialog, NothingIsClippedWithLargerFonts) {
  Plug("COM12");
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    Open();
    ExpectNothingClipped(*window);
    for (const int id : {kSet, kOk}) {
      EXPECT_GE(Button(id).width(), Button(id).minimumSizeHint().width());
      EXPECT_GE(Button(id).height(), Button(id).minimumSizeHint().height());
    }
    EXPECT_GE(Ports().width(), Ports().sizeHint().width());
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    delete window;
  }
}

}  // namespace
}  // namespace quarn::test
