// The main dialog's own menu, and its keys where the system decides which window has the keyboard.

#include "app/main_dialog_fixture.h"

namespace quarn::test {
namespace {

/// On sway, for one test.
class MainDialogOnSway : public MainDialog {
 protected:
  MainDialogOnSway() { qputenv(kSway, "/nowhere"); }
  ~MainDialogOnSway() override { m_former.isNull() ? qunsetenv(kSway) : qputenv(kSway, m_former); }

 private:
  static constexpr char kSway[] = "SWAYSOCK";
  const QByteArray m_former = qgetenv(kSway);
};

TEST_F(MainDialogOnSway, TheTerminalScreenGetsEveryKeyOfTheMainDialog) {
  program.settings.inputMax = QStringLiteral("N");
  dialog.OpenTerminalScreen();
  QTest::keyClicks(&Switch(), QStringLiteral("id 1"));
  QTest::keyClick(&Switch(), Qt::Key_Left);
  QTest::keyClicks(&Switch(), QStringLiteral("x"));
  EXPECT_EQ(program.commandLine.Text(), QStringLiteral("id x1"));
  EXPECT_TRUE(program.state.open.Contains(Window::TerminalScreen)) << "the switch saw the blank";
  EXPECT_TRUE(program.state.requests.focus);
}

TEST_F(MainDialogOnSway, NoKeyGoesToATerminalScreenThatIsClosed) {
  QTest::keyClicks(&Switch(), QStringLiteral("id"));
  EXPECT_EQ(program.commandLine.Text(), QString());
}

TEST_F(MainDialog, HasTheAboutItemInItsContextMenu) {
  QStringList items;
  for (const QAction* action : dialog.actions()) items.append(action->text());
  EXPECT_EQ(items, QStringList{QStringLiteral("Quarnについて(&A)...")});
  EXPECT_EQ(dialog.contextMenuPolicy(), Qt::ActionsContextMenu);
}

TEST_F(MainDialog, AKeyOnlyTakesTheKeyboardToTheTerminalScreen) {
  program.settings.inputMax = QStringLiteral("N");
  dialog.OpenTerminalScreen();
  QTest::keyClicks(&Switch(), QStringLiteral("i"));
  EXPECT_EQ(program.commandLine.Text(), QString());
  EXPECT_TRUE(program.state.requests.focus);
}

}  // namespace
}  // namespace quarn::test
