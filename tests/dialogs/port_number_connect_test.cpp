// COM Port Number while it connects: input has no effect.

#include <QTimer>
#include <QWindow>

#include "dialogs/port_number_fixture.h"
#include "ui/input_hold.h"
#include "ui/window_messages.h"

namespace quarn::test {
namespace {

TEST_F(PortNumberDialog, NothingSlipsIntoAConnectThatIsUnderWay) {
  Plug("COM3");
  Open();
  Pick("COM3");
  whileShown = [this] {
    ASSERT_TRUE(window);
    program.state.requests.close.Add(Window::PortNumber);
    Button(kSetNumber).click();
    Button(kOkNumber).click();
    window->close();
    WaitForATick();
    ASSERT_TRUE(window) << "destroyed under its own message";
    EXPECT_TRUE(window->isVisible());
  };
  Click(kSetNumber);
  EXPECT_TRUE(IsGone()) << "the close was put off, not forgotten";
  EXPECT_EQ(Happened(), (QStringList{"pause 500", ChoiceConnected("COM3")}));
  EXPECT_FALSE(program.state.open.Contains(Window::PortNumber));
}

TEST_F(PortNumberDialog, TitleTellsWhileItConnects) {
  Plug("COM3");
  Open();
  Pick("COM3");
  QString title;
  pause.during = [&] { title = window->windowTitle(); };
  Click(kSetNumber);
  EXPECT_EQ(title, "Quarn - (NONE)   Connecting Port ... ");
}

TEST_F(PortNumberDialog, ASecondClickDuringTheWaitDoesNothing) {
  Plug("COM3");
  InputHold hold;
  DialogContext context{program.settings,
                        program.workingSettingsFile,
                        program.connection,
                        program.state,
                        *program.portSource,
                        program.Environment(),
                        [&hold](int ms) { hold.HoldFor(ms); }};
  window = new CPortNum(nullptr, context);
  ShowActive(*window);
  Pick("COM3");
  QWindow* handle = window->windowHandle();
  const QPoint place = Button(kSetNumber).geometry().center();
  QMetaObject::invokeMethod(
      window, [&] { QTest::mouseClick(handle, Qt::LeftButton, {}, place); }, Qt::QueuedConnection);
  Click(kSetNumber);
  QTest::qWait(300);
  EXPECT_EQ(Happened(), QStringList{ChoiceConnected("COM3")});
}

TEST_F(PortNumberDialog, ItsMessageIsInFrontOfItAndOutlivedByIt) {
  Plug("COM3");
  WindowMessages boxes;
  const DialogContext context{
      program.settings,    program.workingSettingsFile,         program.connection, program.state,
      *program.portSource, {*program.opener, boxes, indicator}, std::ref(pause)};
  window = new CPortNum(nullptr, context);
  ShowActive(*window);
  Pick("COM3");
  bool seen = false;
  QTimer::singleShot(0, qApp, [&] {
    QWidget* box = QApplication::activeModalWidget();
    ASSERT_NE(box, nullptr);
    seen = box->windowHandle()->transientParent() == window->windowHandle();
    program.state.requests.close.Add(Window::PortNumber);
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, Button(kSetNumber).geometry().center());
    QTest::qWait(2 * PolledDialog::kTickMs);
    ASSERT_TRUE(window);
    QTest::keyClick(box, Qt::Key_Return);
  });
  Click(kSetNumber);
  EXPECT_TRUE(seen);
  EXPECT_EQ(Happened(), QStringList{"pause 500"});
  EXPECT_TRUE(IsGone()) << "the request was put off, not forgotten";
}

}  // namespace
}  // namespace quarn::test
