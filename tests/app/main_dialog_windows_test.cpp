// The windows that the main dialog opens.

#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>

#include "app/main_dialog_fixture.h"
#include "app/menu_state.h"
#include "dialogs/terminal/terminal_screen.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

TEST_F(MainDialog, OpensEachDialogOfThePortMenuOnce) {
  const std::map<int, const char*> dialogs{
      {32791, "CPortNum"}, {32792, "CPortDetails"}, {32783, "CPortSettings"}};
  for (const auto& [id, name] : dialogs) {
    EXPECT_TRUE(Action(id)->isEnabled()) << name;
    Action(id)->trigger();
    ASSERT_EQ(Shown(name).size(), 1) << name;
    QWidget* first = Shown(name).first();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog, kLongestWaitMs));
    Action(id)->trigger();
    EXPECT_EQ(Shown(name), QList<QWidget*>{first}) << name;
    EXPECT_TRUE(QTest::qWaitForWindowActive(first, kLongestWaitMs)) << name;
    first->close();
    ASSERT_TRUE(WaitUntil([&, name = name] { return Shown(name).isEmpty(); })) << name;
    Action(id)->trigger();
    EXPECT_EQ(Shown(name).size(), 1) << name;
  }
  EXPECT_TRUE(program.state.open.Contains(Window::PortNumber));
  EXPECT_TRUE(program.state.open.Contains(Window::DetailedPortList));
}

TEST_F(MainDialog, PortNumberDialogComesUpBelow) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  Action(32791)->trigger();
  ASSERT_EQ(Shown("CPortNum").size(), 1);
  const QWidget& opened = *Shown("CPortNum").first();
  const QSize screen = QGuiApplication::primaryScreen()->size();
  EXPECT_TRUE(StandsAt(
      opened, [&] { return ScreenCorner() + PlaceBelowOrAbove(MainOnScreen(), OuterSize(opened), screen); }));
}

TEST_F(MainDialog, AWindowThatWasToldToCloseStaysWhenItIsWantedAgain) {
  for (const auto& [id, name] : {std::pair{32791, "CPortNum"},
                                 {32792, "CPortDetails"},
                                 {command::kCommandFormat, "CCommandFormat"},
                                 {command::kScreenOption, "CScreenOption"},
                                 {command::kMainOption, "CMainOption"}}) {
    Action(id)->trigger();
    RaiseCloseRequests(program.state.requests);
    Action(id)->trigger();
    QTest::qWait(2 * PolledDialog::kTickMs);
    EXPECT_EQ(Shown(name).size(), 1) << name;
    // After another request to close it closes, because it was not opened again.
    RaiseCloseRequests(program.state.requests);
    EXPECT_TRUE(WaitUntil([&, name = name] { return Shown(name).isEmpty(); })) << name;
  }
}

TEST_F(MainDialog, DetailedListDoesNotOpenForTooManyPorts) {
  program.connection.portNames = QStringList(31, QStringLiteral("COM1"));
  Action(32792)->trigger();
  EXPECT_EQ(Happened(),
            QStringList{"information/: Information//Too many COM ports to display in the detailed list. "
                        "/Select a COM port from the \"COM Port Number\" dialog."});
  EXPECT_TRUE(Shown("CPortDetails").isEmpty());
  EXPECT_FALSE(program.state.open.Contains(Window::DetailedPortList));
  program.connection.portNames.removeLast();
  Action(32792)->trigger();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(Shown("CPortDetails").size(), 1);
}

TEST_F(MainDialog, SwitchOpensAndClosesTheTerminalScreen) {
  EXPECT_EQ(Switch().text(), QStringLiteral("ON"));
  QTest::mouseClick(&Switch(), Qt::LeftButton);
  EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen));
  ASSERT_NE(TerminalScreen(), nullptr);
  EXPECT_EQ(Switch().text(), QStringLiteral("OFF"));
  EXPECT_TRUE(program.state.requests.refresh.Take(Window::MainDialog));
  QTest::mouseClick(&Switch(), Qt::LeftButton);
  EXPECT_FALSE(program.state.open.Contains(Window::TerminalScreen));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_EQ(Switch().text(), QStringLiteral("ON"));
  EXPECT_TRUE(WaitUntil([&] { return TerminalScreen() == nullptr; }));
}

TEST_F(MainDialog, TwoQuickClicksLeaveOneTerminalScreen) {
  for (int i = 0; i < 3; ++i) QTest::mouseClick(&Switch(), Qt::LeftButton);  // open, close, open
  EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen));
  EXPECT_TRUE(WaitUntil([&] {
    int visible = 0;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->windowTitle().startsWith("Quarn - Terminal")) ++visible;
    }
    return visible == 1;
  }));
  QTest::qWait(3 * PolledDialog::kTickMs);  // requests for the first one do not affect the second
  EXPECT_NE(TerminalScreen(), nullptr);
  EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen));
}

TEST_F(MainDialog, OpensTheFunctionKeyTableOnce) {
  dialog.StartTimer();
  QAction* item = Action(32777);
  EXPECT_TRUE(item->isEnabled());
  item->trigger();
  EXPECT_TRUE(program.state.open.Contains(Window::FunctionKeyTable));
  EXPECT_TRUE(program.state.requests.refresh.Contains(Window::MainDialog));
  QWidget* table = FunctionKeyTable();
  ASSERT_NE(table, nullptr);
  EXPECT_TRUE(WaitUntil([&] { return !item->isEnabled(); }));
  ASSERT_TRUE(FrameIsThere(*table));
  table->move(150, 90);
  ASSERT_TRUE(StandsAt(*table, [] { return QPoint(150, 90); }));
  table->close();
  EXPECT_TRUE(WaitUntil([&] { return item->isEnabled() && FunctionKeyTable() == nullptr; }));
  item->trigger();
  ASSERT_NE(FunctionKeyTable(), nullptr);
  EXPECT_TRUE(StandsAt(*FunctionKeyTable(), [] { return QPoint(150, 90); }));
}

TEST_F(MainDialog, TerminalScreenOpensTheFunctionKeyTable) {
  QTest::mouseClick(&Switch(), Qt::LeftButton);
  ASSERT_NE(TerminalScreen(), nullptr);
  QAction* item = nullptr;
  for (QAction* each : TerminalScreen()->findChildren<QAction*>()) {
    if (each->text() == QStringLiteral("Function Key Table")) item = each;
  }
  ASSERT_NE(item, nullptr);
  EXPECT_TRUE(item->isEnabled());
  item->trigger();
  item->trigger();
  EXPECT_NE(FunctionKeyTable(), nullptr);
  EXPECT_EQ(dialog.findChildren<QDialog*>(QStringLiteral("CSetMem")).size(), 1);
}

TEST_F(MainDialog, EndsWithoutAWordFromAFunctionKeyTableInEditMode) {
  Action(32777)->trigger();
  auto* edit = FunctionKeyTable()->findChild<QPushButton*>(QStringLiteral("EDIT"));
  QTest::mouseClick(edit, Qt::LeftButton);
  EXPECT_EQ(edit->text(), QStringLiteral("ENTER"));
  dialog.close();
  QApplication::closeAllWindows();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_EQ(FunctionKeyTable(), nullptr);
}

TEST_F(MainDialog, ANewTerminalScreenLoadsWhatWasChosenBeforeAndSendsNothing) {
  program.settings.mem[4] = QStringLiteral("stored");
  program.state.requests.functionKey = 4;
  program.state.requests.send = true;
  program.state.requests.sendAction = true;
  dialog.OpenTerminalScreen();
  EXPECT_FALSE(program.state.requests.send);
  EXPECT_FALSE(program.state.requests.sendAction);
  EXPECT_TRUE(WaitUntil([this] { return program.commandLine.Text() == QStringLiteral("stored"); }));
  EXPECT_EQ(program.log.LineCount(), 0);
}

TEST_F(MainDialog, ANewTerminalScreenBeginsWithTheEmptyLogThatWasAskedFor) {
  program.log.AppendLogText("1\r");
  program.commandLine.TypeCharacter(u'x', 48);
  program.state.requests.clearLog = true;
  dialog.OpenTerminalScreen();
  EXPECT_FALSE(program.state.requests.clearLog);
  EXPECT_EQ(program.log.LineCount(), 0);
  EXPECT_EQ(program.commandLine.Text(), QString());
}

TEST_F(MainDialog, TheOptionMenuOpensEachDialogOnce) {
  const std::map<int, QString> titles{{32775, "Quarn - Command Format"},
                                      {32779, "Quarn - Terminal Screen Option"},
                                      {32790, "Quarn - Main Dialog Optiom"}};
  for (const auto& [id, title] : titles) {
    ASSERT_TRUE(Action(id)->isEnabled()) << id;
    Action(id)->trigger();
    const QList<QWidget*> first = Windows(title);
    ASSERT_EQ(first.size(), 1);
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog, kLongestWaitMs));
    Action(id)->trigger();
    EXPECT_EQ(Windows(title), first);
    EXPECT_TRUE(QTest::qWaitForWindowActive(first.front(), kLongestWaitMs));
    first.front()->close();
    EXPECT_TRUE(Windows(title).isEmpty());
    Action(id)->trigger();
    EXPECT_EQ(Windows(title).size(), 1) << "closed, it opens anew";
    Windows(title).front()->close();
  }
}

TEST_F(MainDialog, CommandFormatStandsBesideIt) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  Action(32775)->trigger();
  const QWidget* format = Windows(QStringLiteral("Quarn - Command Format")).value(0);
  ASSERT_NE(format, nullptr);
  dialog.StartTimer();
  const QSize screen = QGuiApplication::primaryScreen()->size();
  EXPECT_TRUE(StandsAt(
      *format, [&] { return ScreenCorner() + PlaceBeside(MainOnScreen(), OuterSize(*format), screen); }));
  program.state.requests.close.Add(Window::CommandFormat);
  EXPECT_TRUE(WaitUntil([&] { return !program.state.open.Contains(Window::CommandFormat); }));
}

TEST_F(MainDialog, WindowsWithoutAPlaceOfTheirOwnDoNotComeUpOnEachOther) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  dialog.StartTimer();
  // The screen has room for the smallest one beside one of the others.
  for (const auto& [id, name] : {std::pair{command::kDetailedPortList, "CPortDetails"},
                                 {command::kFunctionKeyTable, "CSetMem"},
                                 {command::kScreenOption, "CScreenOption"}}) {
    Action(id)->trigger();
    QWidget* first = Shown(name).value(0);
    ASSERT_NE(first, nullptr) << name;
    ASSERT_TRUE(FrameIsThere(*first)) << name;
    Action(command::kMainOption)->trigger();
    QWidget* second = Shown("CMainOption").value(0);
    ASSERT_NE(second, nullptr) << name;
    ASSERT_TRUE(FrameIsThere(*second)) << name;
    EXPECT_TRUE(WaitUntil([&, opened = first] {
      const QRect main = dialog.frameGeometry();
      return !opened->frameGeometry().intersects(main) && !second->frameGeometry().intersects(main) &&
             !second->frameGeometry().intersects(opened->frameGeometry());
    })) << name;
    second->close();
    first->close();
  }
}

TEST_F(MainDialog, AMinimisedWindowIsInNobodysWay) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  dialog.StartTimer();
  const QSize screen = QGuiApplication::primaryScreen()->size();
  Action(command::kScreenOption)->trigger();
  QWidget* minimised = Shown("CScreenOption").value(0);
  ASSERT_NE(minimised, nullptr);
  minimised->showMinimized();
  Action(command::kMainOption)->trigger();
  QWidget* option = Shown("CMainOption").value(0);
  ASSERT_NE(option, nullptr);
  EXPECT_TRUE(StandsAt(*option, [&] {
    return ScreenCorner() + PlaceOffOthers(MainOnScreen(), {}, OuterSize(*option), screen);
  }));
}

TEST_F(MainDialog, TheFunctionKeyTableComesUpBelowTheFirstTime) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  const QSize screen = QGuiApplication::primaryScreen()->size();
  Action(command::kFunctionKeyTable)->trigger();
  const QWidget* table = FunctionKeyTable();
  ASSERT_NE(table, nullptr);
  EXPECT_TRUE(StandsAt(*table, [&] {
    return ScreenCorner() + PlaceOffOthers(MainOnScreen(), {}, OuterSize(*table), screen);
  }));
}

TEST_F(MainDialog, ListTableAndOptionsLeaveItsMenusInReach) {
  dialog.move(ScreenCorner() + QPoint(30, 40));
  dialog.StartTimer();
  const auto* bar = dialog.findChild<QMenuBar*>();
  const QRect menus(bar->mapToGlobal(QPoint()), bar->size());
  for (const auto& [id, title] : std::map<int, QString>{{32792, "Quarn - Detailed COM Port List  (NONE)  "},
                                                        {32777, "Quarn - Function Key Table"},
                                                        {32779, "Quarn - Terminal Screen Option"},
                                                        {32790, "Quarn - Main Dialog Optiom"}}) {
    Action(id)->trigger();
    QWidget* each = Windows(title).value(0);
    ASSERT_NE(each, nullptr) << title.toStdString();
    ASSERT_TRUE(FrameIsThere(*each)) << title.toStdString();
    EXPECT_TRUE(WaitUntil([&, window = each] { return !window->frameGeometry().intersects(menus); }))
        << title.toStdString();
    each->close();
  }
}

TEST_F(MainDialog, CanBePutAway) {
  EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
  EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
  EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
}

TEST_F(MainDialog, TheTerminalScreensMenuOpensItsOptions) {
  dialog.OpenTerminalScreen();
  auto* screen = dynamic_cast<CTerminalScreen*>(TerminalScreen());
  ASSERT_NE(screen, nullptr);
  QAction* option = screen->ContextMenu().actions().last();
  EXPECT_EQ(option->text(), QStringLiteral("Option"));
  ASSERT_TRUE(option->isEnabled());
  option->trigger();
  option->trigger();
  EXPECT_EQ(Windows(QStringLiteral("Quarn - Terminal Screen Option")).size(), 1);
}

}  // namespace
}  // namespace quarn::test
