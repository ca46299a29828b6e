#include "app/main_dialog.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include "app/app_fixture.h"
#include "app/dialog_placement.h"
#include "terminal/dialogs/terminal_screen.h"
#include "ui/control.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

class MainDialog : public AppTest {
 protected:
  void SetUp() override {
    MakeFolders();
    WriteSettings(program.workingSettingsFile, {});
    dialog.SetTitle(QString());
    dialog.UpdateMenuState();
    dialog.ShowUserFile();
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  }
  QAction* Action(int id) {
    for (QAction* action : dialog.findChildren<QAction*>()) {
      if (action->property(kControlIdProperty) == id) return action;
    }
    return nullptr;
  }
  template <typename Widget>
  Widget* Control(int id) {
    for (Widget* each : dialog.findChildren<Widget*>()) {
      if (each->property(kControlIdProperty) == id) return each;
    }
    return nullptr;
  }
  QPushButton& Switch() { return *Control<QPushButton>(1001); }
  QWidget* TerminalScreen() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget != &dialog && widget->isVisible() &&
          widget->objectName() == QStringLiteral("CTerminalScreen")) {
        return widget;
      }
    }
    return nullptr;
  }

  QWidget* FunctionKeyTable() {
    auto* table = dialog.findChild<QDialog*>(QStringLiteral("CSetMem"));
    return table != nullptr && table->isVisible() ? table : nullptr;
  }
  static QList<QWidget*> Windows(const QString& title) {
    QList<QWidget*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->windowTitle() == title) windows.append(widget);
    }
    return windows;
  }
  /// The windows of this kind that are there to be seen.
  QList<QWidget*> Shown(const char* name) {
    QList<QWidget*> shown;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->objectName() == QLatin1String(name)) shown.append(widget);
    }
    return shown;
  }

  CQuarnDlg dialog{program};
};

TEST_F(MainDialog, HasTheMenusInTheirOrder) {
  const auto* bar = dialog.findChild<QMenuBar*>();
  QStringList shown;
  for (const QAction* title : bar->actions()) {
    QStringList items;
    for (const QAction* item : title->menu()->actions()) {
      items.append(item->isSeparator() ? QStringLiteral("-")
                                       : item->property(kControlIdProperty).toString() + QLatin1Char(' ') +
                                             item->text().remove(QLatin1Char('&')));
    }
    shown.append(title->text().remove(QLatin1Char('&')) + QStringLiteral(": ") +
                 items.join(QStringLiteral(", ")));
  }
  EXPECT_EQ(
      shown,
      (QStringList{
          ("File: 32793 Open, 57603 Save, 32795 Save As, 32807 Close File, -, 32799 Restore Defaults, -, "
           "32771 Exit"),
          ("Port: 32791 COM Port Number, 32792 Detailed COM Port List, -, 32805 Connect COM Port, 32801 "
           "Disconnect COM Port, -, 32783 COM Port Settings, 32789 Reset Current COM Port"),
          "Tools: 32772 Terminal Screen, 32777 Function Key Table",
          ("Option: 32775 Command Format  (F), 32779 Terminal Screen Option  (T), 32790 Main Dialog Option "
           "(M)"),
          "Help: 57667 About",
      }));
}

TEST_F(MainDialog, MnemonicsAreUniqueWithinAMenu) {
  const auto* bar = dialog.findChild<QMenuBar*>();
  QList<QList<QAction*>> groups{bar->actions()};
  for (const QAction* title : bar->actions()) groups.append(title->menu()->actions());
  for (const QList<QAction*>& group : groups) {
    QSet<QChar> used;
    for (const QAction* action : group) {
      if (action->isSeparator()) continue;
      const qsizetype mark = action->text().indexOf(QLatin1Char('&'));
      ASSERT_GE(mark, 0) << action->text().toStdString();
      const QChar letter = action->text().at(mark + 1).toLower();
      EXPECT_FALSE(used.contains(letter)) << action->text().toStdString();
      used.insert(letter);
    }
  }
}

TEST_F(MainDialog, EnablesWhatCanBeUsed) {
  const std::map<int, QString> when{{57603, "user file"}, {32807, "user file"}, {32789, "connected"},
                                    {32801, "connected"}, {32805, "port"},      {32772, "closed"}};
  const auto check = [&](const QStringList& facts) {
    dialog.UpdateMenuState();
    for (const auto& [id, fact] : when) EXPECT_EQ(Action(id)->isEnabled(), facts.contains(fact)) << id;
  };
  check({"closed"});
  program.userFile = QStringLiteral("a.qrn");
  program.state.currentPortName = QStringLiteral("COM3");
  check({"closed", "user file", "port"});
  program.connection.connected = true;
  program.state.open.terminalScreen = true;
  check({"user file", "connected"});
}

TEST_F(MainDialog, TitleNamesPortAndState) {
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (NONE)"));
  program.state.currentPortName = QStringLiteral("COM3");
  dialog.SetTitle(QString());
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM3-NC)"));
  program.connection.connected = true;
  dialog.SetTitle(QString());
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM3)"));
  dialog.SetTitle(QStringLiteral("- Resetting Port ..."));
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM3)- Resetting Port ..."));
}

TEST_F(MainDialog, StatusLineNamesTheUserFile) {
  auto* status = Control<QLabel>(1075);
  EXPECT_EQ(status->text(), QStringLiteral("[ Internal Configuration State ]"));
  program.userFile = QStringLiteral("/lab/a.qrn");
  dialog.ShowUserFile();
  EXPECT_EQ(status->text(), QStringLiteral("( /lab/a.qrn )"));
  const QSize before = dialog.size();
  program.userFile = QStringLiteral("/lab/") + QString(200, u'x') + QStringLiteral("/deeper/b.qrn");
  dialog.ShowUserFile();
  QApplication::processEvents();
  EXPECT_TRUE(status->text().startsWith("( ") && status->text().endsWith("b.qrn )"))
      << status->text().toStdString();
  EXPECT_LE(status->fontMetrics().horizontalAdvance(status->text()), status->width());
  EXPECT_EQ(dialog.size(), before);
  program.userFile = QStringLiteral("/lab/<b>&amp;.qrn");
  dialog.ShowUserFile();
  EXPECT_EQ(status->text(), QStringLiteral("( /lab/<b>&amp;.qrn )"));
}

TEST_F(MainDialog, HeadingIsBold) {
  auto* heading = Control<QLabel>(1076);
  EXPECT_EQ(heading->text(), QStringLiteral("Quarn  :  Serial Port Terminal"));
  EXPECT_EQ(heading->font().weight(), QFont::Bold);
  EXPECT_NE(dialog.font().weight(), QFont::Bold);
}

TEST_F(MainDialog, OpensEachDialogOfThePortMenuOnce) {
  const std::map<int, const char*> dialogs{
      {32791, "CPortNum"}, {32792, "CPortDetails"}, {32783, "CPortSettings"}};
  for (const auto& [id, name] : dialogs) {
    EXPECT_TRUE(Action(id)->isEnabled()) << name;
    Action(id)->trigger();
    ASSERT_EQ(Shown(name).size(), 1) << name;
    QWidget* first = Shown(name).first();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    Action(id)->trigger();
    EXPECT_EQ(Shown(name), QList<QWidget*>{first}) << name;
    EXPECT_TRUE(QTest::qWaitForWindowActive(first)) << name;
    first->close();
    ASSERT_TRUE(QTest::qWaitFor([&, name = name] { return Shown(name).isEmpty(); })) << name;
    Action(id)->trigger();
    EXPECT_EQ(Shown(name).size(), 1) << name;
  }
  EXPECT_TRUE(program.state.open.portNumber);
  EXPECT_TRUE(program.state.open.detailedPortList);
}

TEST_F(MainDialog, PortNumberDialogComesUpBelow) {
  Action(32791)->trigger();
  ASSERT_EQ(Shown("CPortNum").size(), 1);
  const QWidget& opened = *Shown("CPortNum").first();
  EXPECT_EQ(opened.x(), dialog.x());
  EXPECT_GE(opened.y(), dialog.y() + dialog.height());
}

TEST_F(MainDialog, PortDialogThatWasToldToCloseStaysWhenItIsWantedAgain) {
  for (const auto& [id, name] : {std::pair{32791, "CPortNum"}, {32792, "CPortDetails"}}) {
    Action(id)->trigger();
    program.state.requests.portNumberClose = true;
    program.state.requests.detailedListClose = true;
    Action(id)->trigger();
    QTest::qWait(2 * PolledDialog::kTickMs);
    EXPECT_EQ(Shown(name).size(), 1) << name;
  }
}

TEST_F(MainDialog, DetailedListDoesNotOpenForTooManyPorts) {
  program.state.tooManyPorts = true;
  Action(32792)->trigger();
  EXPECT_EQ(Happened(),
            QStringList{"information/: Information//Too many COM ports to display in the detailed list. "
                        "/Select a COM port from the \"COM Port Number\" dialog."});
  EXPECT_TRUE(Shown("CPortDetails").isEmpty());
  EXPECT_FALSE(program.state.open.detailedPortList);
}

TEST_F(MainDialog, SwitchOpensAndClosesTheTerminalScreen) {
  EXPECT_EQ(Switch().text(), QStringLiteral("ON"));
  QTest::mouseClick(&Switch(), Qt::LeftButton);
  EXPECT_TRUE(program.state.open.terminalScreen);
  ASSERT_NE(TerminalScreen(), nullptr);
  EXPECT_EQ(Switch().text(), QStringLiteral("OFF"));
  EXPECT_TRUE(program.state.requests.mainRefresh);
  QTest::mouseClick(&Switch(), Qt::LeftButton);
  EXPECT_FALSE(program.state.open.terminalScreen);
  EXPECT_EQ(Switch().text(), QStringLiteral("ON"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return TerminalScreen() == nullptr; }));
}

TEST_F(MainDialog, TwoQuickClicksLeaveOneTerminalScreen) {
  for (int i = 0; i < 3; ++i) QTest::mouseClick(&Switch(), Qt::LeftButton);  // open, close, open
  EXPECT_TRUE(program.state.open.terminalScreen);
  EXPECT_TRUE(QTest::qWaitFor([&] {
    int visible = 0;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->windowTitle().startsWith("Quarn - Terminal")) ++visible;
    }
    return visible == 1;
  }));
  QTest::qWait(3 * PolledDialog::kTickMs);  // nothing that was asked of the first one hits the second
  EXPECT_NE(TerminalScreen(), nullptr);
  EXPECT_TRUE(program.state.open.terminalScreen);
}

TEST_F(MainDialog, OpensTheFunctionKeyTableOnce) {
  dialog.StartTimer();
  QAction* item = Action(32777);
  EXPECT_TRUE(item->isEnabled());
  item->trigger();
  EXPECT_TRUE(program.state.open.functionKeyTable);
  EXPECT_TRUE(program.state.requests.mainRefresh);
  QWidget* table = FunctionKeyTable();
  ASSERT_NE(table, nullptr);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !item->isEnabled(); }));
  table->move(150, 90);
  const QPoint place = table->pos();
  table->close();
  EXPECT_TRUE(QTest::qWaitFor([&] { return item->isEnabled() && FunctionKeyTable() == nullptr; }));
  item->trigger();
  ASSERT_NE(FunctionKeyTable(), nullptr);
  EXPECT_EQ(FunctionKeyTable()->pos(), place);
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

TEST_F(MainDialog, ANewTerminalScreenSendsNothingThatWasAskedBefore) {
  program.state.requests.send = true;
  program.state.requests.sendAction = true;
  dialog.OpenTerminalScreen();
  EXPECT_FALSE(program.state.requests.send);
  EXPECT_FALSE(program.state.requests.sendAction);
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
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    Action(id)->trigger();
    EXPECT_EQ(Windows(title), first);
    EXPECT_TRUE(QTest::qWaitForWindowActive(first.front()));
    first.front()->close();
    EXPECT_TRUE(Windows(title).isEmpty());
    Action(id)->trigger();
    EXPECT_EQ(Windows(title).size(), 1) << "closed, it opens anew";
    Windows(title).front()->close();
  }
}

TEST_F(MainDialog, CommandFormatStandsBesideIt) {
  dialog.move(30, 40);
  Action(32775)->trigger();
  const QWidget* format = Windows(QStringLiteral("Quarn - Command Format")).value(0);
  ASSERT_NE(format, nullptr);
  // Once more when the frame around it is known.
  dialog.StartTimer();
  const QSize screen = QGuiApplication::primaryScreen()->size();
  EXPECT_TRUE(QTest::qWaitFor([&] {
    return format->pos() == PlaceBeside({dialog.pos(), OuterSize(dialog)}, OuterSize(*format), screen);
  }));
  program.state.requests.commandFormatClose = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return !program.state.open.commandFormat; }));
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

TEST_F(MainDialog, SwitchActsOnlyWithTheFocus) {
  Switch().clearFocus();
  Switch().click();
  EXPECT_FALSE(program.state.open.terminalScreen);
}

TEST_F(MainDialog, EnterAndEscapeDoNothing) {
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    QTest::keyClick(dialog.windowHandle(), key);
    Switch().setFocus();
    QTest::keyClick(&Switch(), key);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(program.state.open.terminalScreen);
  }
}

TEST_F(MainDialog, SpaceOnTheSwitchOpensTheTerminalScreen) {
  Switch().setFocus();
  QTest::keyClick(dialog.windowHandle(), Qt::Key_Space);
  EXPECT_TRUE(program.state.open.terminalScreen);
}

TEST_F(MainDialog, KeysGoToTheTerminalScreenWhileItIsOpen) {
  program.state.open.terminalScreen = true;
  Switch().setFocus();
  for (const auto key : {Qt::Key_Space, Qt::Key_A, Qt::Key_Return, Qt::Key_F1}) {
    program.state.requests.focus = false;
    QTest::keyClick(dialog.windowHandle(), key);
    EXPECT_TRUE(program.state.requests.focus) << key;
    EXPECT_TRUE(program.state.open.terminalScreen) << "the switch saw key " << key;
  }
  program.state.requests.focus = false;
  QTest::keyClick(dialog.windowHandle(), Qt::Key_F, Qt::AltModifier);
  EXPECT_TRUE(program.state.requests.focus);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(MainDialog, MnemonicsOpenTheMenusWhileItIsClosed) {
  QTest::keyClick(dialog.windowHandle(), Qt::Key_F, Qt::AltModifier);
  QWidget* menu = QApplication::activePopupWidget();
  ASSERT_NE(menu, nullptr);
  // Enter and Escape belong to the menu then.
  QTest::keyClick(menu, Qt::Key_Escape);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(MainDialog, RefreshRequestIsHandledAtTheNextTick) {
  dialog.StartTimer();
  program.state.currentPortName = QStringLiteral("COM7");
  program.userFile = QStringLiteral("/x.qrn");
  program.state.requests.mainRefresh = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return !program.state.requests.mainRefresh; }));
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM7-NC)"));
  EXPECT_TRUE(Action(32805)->isEnabled());
  EXPECT_EQ(Control<QLabel>(1075)->text(), QStringLiteral("( /x.qrn )"));
}

TEST_F(MainDialog, ClosingAsksWhenTheSettingsDifferFromTheUserFile) {
  program.userFile = m_folder + QStringLiteral("mine.qrn");
  WriteSettings(program.userFile, {{"MEM0", "other"}});
  messages.answers = {false, true};
  const QString question =
      QStringLiteral("yes or no/: Confirmation//Settings have been changed./Exit program without saving?");
  dialog.close();
  EXPECT_EQ(Happened(), QStringList{question});
  EXPECT_TRUE(dialog.isVisible());
  dialog.close();
  EXPECT_EQ(Happened(), QStringList{question});
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(MainDialog, ClosingInTheInternalConfigurationStateDoesNotAsk) {
  Action(32771)->trigger();
  EXPECT_EQ(Happened(), QStringList());
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(MainDialog, StandsAtItsShareOfTheScreen) {
  dialog.PlaceByPercent(98, 3);
  const QSize screen = QGuiApplication::primaryScreen()->size();
  const QPoint wanted = PercentPosition(screen, OuterSize(dialog), 98, 3);
  EXPECT_EQ(dialog.pos(), wanted);
}

TEST_F(MainDialog, MenuBarThatFitsDoesNotWrap) {
  EXPECT_FALSE(dialog.MenuBarWraps());
  auto* bar = dialog.findChild<QMenuBar*>();
  bar->setStyleSheet(QStringLiteral("QMenuBar { font-size: 48px }"));
  QApplication::processEvents();
  EXPECT_TRUE(dialog.MenuBarWraps());
}

TEST(MainDialogBeforeItsFirstShow, KnowsWhetherItsMenuBarWraps) {
  struct Unshown : AppTest {
    void TestBody() override {
      CQuarnDlg dialog(program);
      EXPECT_FALSE(dialog.MenuBarWraps());
      dialog.findChild<QMenuBar*>()->setStyleSheet(QStringLiteral("QMenuBar { font-size: 48px }"));
      EXPECT_TRUE(dialog.MenuBarWraps());
    }
  };
  Unshown().TestBody();
}

}  // namespace
}  // namespace quarn::test
