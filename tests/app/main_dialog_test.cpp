#include <QContextMenuEvent>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTimer>

#include "app/main_dialog_fixture.h"
#include "support/waits.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

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

TEST_F(MainDialog, OptionItemsShowTheirLetters) {
  EXPECT_EQ(Action(32775)->text(), QStringLiteral("Command Format  (&F)"));
  EXPECT_EQ(Action(32779)->text(), QStringLiteral("Terminal Screen Option  (&T)"));
  EXPECT_EQ(Action(32790)->text(), QStringLiteral("Main Dialog Option (&M)"));
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
  program.connection.connected.Update(PortChange::Opened);
  program.state.open.Add(Window::TerminalScreen);
  check({"user file", "connected"});
}

TEST_F(MainDialog, TitleNamesPortAndState) {
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (NONE)"));
  program.state.currentPortName = QStringLiteral("COM3");
  dialog.SetTitle(QString());
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM3-NC)"));
  program.connection.connected.Update(PortChange::Opened);
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
  EXPECT_EQ(status->text(), QDir::toNativeSeparators(QStringLiteral("( /lab/a.qrn )")));
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
  EXPECT_EQ(status->text(), QDir::toNativeSeparators(QStringLiteral("( /lab/<b>&amp;.qrn )")));
  program.userFile = QStringLiteral("/lab/a\nb\u202Enrq.qrn");
  dialog.ShowUserFile();
  EXPECT_EQ(status->text(), QDir::toNativeSeparators(QStringLiteral("( /lab/a?b?nrq.qrn )")));
}

TEST_F(MainDialog, HasItsSizeInDialogUnits) {
  const QSize wanted = MapDialogUnits(dialog.font(), {0, 0, 205, 70}).size();
  EXPECT_EQ(dialog.width(), wanted.width());
  constexpr int kRounding = 2;
  EXPECT_NEAR(dialog.height() - dialog.findChild<QMenuBar*>()->height(), wanted.height(), kRounding);
}

TEST_F(MainDialog, HeadingIsBold) {
  auto* heading = Control<QLabel>(1076);
  EXPECT_EQ(heading->text(), QStringLiteral("Quarn  :  Serial Port Terminal"));
  EXPECT_EQ(heading->font().weight(), QFont::Bold);
  EXPECT_NE(dialog.font().weight(), QFont::Bold);
}

TEST_F(MainDialog, SwitchActsOnlyWithTheFocus) {
  Switch().clearFocus();
  Switch().click();
  EXPECT_FALSE(program.state.open.Contains(Window::TerminalScreen));
}

TEST_F(MainDialog, EnterAndEscapeDoNothing) {
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    QTest::keyClick(dialog.windowHandle(), key);
    Switch().setFocus();
    QTest::keyClick(&Switch(), key);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(program.state.open.Contains(Window::TerminalScreen));
  }
}

TEST_F(MainDialog, SpaceOnTheSwitchOpensTheTerminalScreen) {
  Switch().setFocus();
  QTest::keyClick(dialog.windowHandle(), Qt::Key_Space);
  EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen));
}

TEST_F(MainDialog, KeysGoToTheTerminalScreenWhileItIsOpen) {
  program.state.open.Add(Window::TerminalScreen);
  Switch().setFocus();
  for (const auto key : {Qt::Key_Space, Qt::Key_A, Qt::Key_Return, Qt::Key_F1}) {
    program.state.requests.focus = false;
    QTest::keyClick(dialog.windowHandle(), key);
    EXPECT_TRUE(program.state.requests.focus) << key;
    EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen)) << "the switch saw key " << key;
  }
  program.state.requests.focus = false;
  QTest::keyClick(dialog.windowHandle(), Qt::Key_F, Qt::AltModifier);
  EXPECT_TRUE(program.state.requests.focus);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(MainDialog, TheMenuKeyGoesToTheTerminalScreenWhileItIsOpen) {
  int menus = 0;
  const auto ask = [&](QContextMenuEvent::Reason reason) {
    // An open menu has the keyboard until it closes.
    QTimer::singleShot(0, &dialog, [&] {
      QWidget* menu = QApplication::activePopupWidget();
      if (menu == nullptr) return;
      ++menus;
      menu->close();
    });
    const QPoint place(dialog.width() / 2, dialog.height() - 3);
    QContextMenuEvent event(reason, place, dialog.mapToGlobal(place));
    QApplication::sendEvent(dialog.windowHandle(), &event);
    QCoreApplication::processEvents();
  };
  program.state.open.Add(Window::TerminalScreen);
  ask(QContextMenuEvent::Keyboard);
  EXPECT_TRUE(program.state.requests.focus);
  EXPECT_EQ(menus, 0);
  program.state.requests.focus = false;
  ask(QContextMenuEvent::Mouse);
  EXPECT_FALSE(program.state.requests.focus) << "that is a click";
}

TEST_F(MainDialog, MnemonicsOpenTheMenusWhileItIsClosed) {
  QTest::keyClick(dialog.windowHandle(), Qt::Key_F, Qt::AltModifier);
  QWidget* menu = QApplication::activePopupWidget();
  ASSERT_NE(menu, nullptr);
  // Then the menu gets Enter and Escape.
  QTest::keyClick(menu, Qt::Key_Escape);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(MainDialog, RefreshRequestIsHandledAtTheNextTick) {
  dialog.StartTimer();
  program.state.currentPortName = QStringLiteral("COM7");
  program.userFile = QStringLiteral("/x.qrn");
  program.state.requests.refresh.Add(Window::MainDialog);
  EXPECT_TRUE(WaitUntil([&] { return !program.state.requests.refresh.Contains(Window::MainDialog); }));
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Quarn   (COM7-NC)"));
  EXPECT_TRUE(Action(32805)->isEnabled());
  EXPECT_EQ(Control<QLabel>(1075)->text(), QDir::toNativeSeparators(QStringLiteral("( /x.qrn )")));
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
  EXPECT_TRUE(StandsOnScreen(
      dialog, [&](QSize screen) { return PercentPosition(screen, OuterSize(dialog), 98, 3); }));
}

TEST_F(MainDialog, MenuBarThatFitsDoesNotWrap) {
  EXPECT_FALSE(dialog.MenuBarWraps());
  auto* bar = dialog.findChild<QMenuBar*>();
  bar->setStyleSheet(QStringLiteral("QMenuBar { font-size: 48px }"));
  QApplication::processEvents();
  EXPECT_TRUE(dialog.MenuBarWraps());
}

TEST_F(MainDialog, TheLogoStandsAboveTheStatusLineAtTheRight) {
  const auto* logo = dialog.findChild<QLabel*>(QStringLiteral("logo"));
  const QRect status = Control<QLabel>(1075)->geometry();
  EXPECT_LT(logo->geometry().bottom(), status.top());
  EXPECT_EQ(logo->geometry().right(), status.right());
  EXPECT_LT(Control<QLabel>(1076)->geometry().right(), logo->geometry().left());
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

TEST(MainDialogBeforeItsFirstShow, OffersNothingThatCannotBeUsed) {
  struct Fresh : AppTest {
    void TestBody() override {
      const CQuarnDlg dialog(program);
      QSet<int> disabled;
      for (const QAction* action : dialog.findChildren<QAction*>()) {
        if (!action->isEnabled()) disabled.insert(action->property(kControlIdProperty).toInt());
      }
      EXPECT_EQ(disabled, (QSet<int>{57603, 32807, 32789, 32801, 32805}));
    }
  };
  Fresh().TestBody();
}

}  // namespace
}  // namespace quarn::test
