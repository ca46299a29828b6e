#include "system/e2e/accessible_windows.h"

namespace quarn::test {
namespace {

/// What can be read in the program's windows, and done to their controls by name.
class Reading : public AccessibleWindows {
 protected:
  const QString kTools = QStringLiteral("Tools");
  const QString kTerminalItem = QStringLiteral("Terminal Screen");
  const QString kHeading = QStringLiteral("Quarn  :  Serial Port Terminal");
  const QString kStatus = QStringLiteral("[ Internal Configuration State ]");

  bool SwitchSays(const char* text) { return Buttons(kMain) == QStringList{QLatin1String(text)}; }
  /// The last words: the window has gone, and the main window knows it.
  bool TerminalIsClosed() { return desktop.Windows(kTerminal).isEmpty() && SwitchSays("ON"); }
  bool TerminalIsOpen() { return !desktop.Windows(kTerminal).isEmpty() && SwitchSays("OFF"); }
};

TEST_F(Reading, TheMainWindowsTextsFromTopToBottom) {
  StartConnected("* -> line \"OK\"");
  const QStringList expected{kHeading, QStringLiteral("Terminal Screen  ---"), kStatus};
  EXPECT_TRUE(Eventually([&] { return Texts(kMain) == expected; }))
      << Texts(kMain).join(QLatin1Char('|')).toStdString();
  EXPECT_EQ(TextOfControl(kMain, kStatus), kStatus);
  EXPECT_FALSE(FindControl(kMain, QStringLiteral("no such thing")));
  EXPECT_TRUE(Texts(QStringLiteral("^no such window$")).isEmpty());
}

TEST_F(Reading, TheMenusWithoutOpeningThem) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(Eventually([this] { return SwitchSays("OFF"); }));
  EXPECT_EQ(Menus(), (QStringList{QStringLiteral("File"), QStringLiteral("Port"), kTools,
                                  QStringLiteral("Option"), QStringLiteral("Help")}));
  EXPECT_EQ(MenuItems(QStringLiteral("File")),
            (QStringList{QStringLiteral("Open"), QStringLiteral("Save"), QStringLiteral("Save As"),
                         QStringLiteral("Close File"), QStringLiteral("Restore Defaults"),
                         QStringLiteral("Exit")}));
  EXPECT_EQ(MenuItems(QStringLiteral("Port")),
            (QStringList{QStringLiteral("COM Port Number"), QStringLiteral("Detailed COM Port List"),
                         QStringLiteral("Connect COM Port"), QStringLiteral("Disconnect COM Port"),
                         QStringLiteral("COM Port Settings"), QStringLiteral("Reset Current COM Port")}));
  EXPECT_EQ(MenuItems(kTools), (QStringList{kTerminalItem, QStringLiteral("Function Key Table")}));
  EXPECT_EQ(MenuItems(QStringLiteral("Option")),
            (QStringList{QStringLiteral("Command Format  (F)"), QStringLiteral("Terminal Screen Option  (T)"),
                         QStringLiteral("Main Dialog Option (M)")}));
  EXPECT_EQ(MenuItems(QStringLiteral("Help")), QStringList{QStringLiteral("About")});
  EXPECT_TRUE(MenuItemEnabled(QStringLiteral("File"), QStringLiteral("Exit")));
  EXPECT_FALSE(MenuItemChecked(QStringLiteral("File"), QStringLiteral("Exit")));
  EXPECT_FALSE(MenuItemEnabled(QStringLiteral("File"), QStringLiteral("Save")));
  EXPECT_FALSE(MenuItemEnabled(QStringLiteral("Port"), QStringLiteral("Connect COM Port")));
  EXPECT_TRUE(MenuItemEnabled(QStringLiteral("Port"), QStringLiteral("Disconnect COM Port")));
  EXPECT_FALSE(MenuItemEnabled(kTools, kTerminalItem));
}

TEST_F(Reading, TheSwitchClosesTheTerminalScreenAndTheMenuOpensIt) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(Eventually([this] { return SwitchSays("OFF"); }));
  ClickButton(kMain, QStringLiteral("OFF"), [this] { return TerminalIsClosed(); });
  EXPECT_TRUE(MenuItemEnabled(kTools, kTerminalItem));
  ChooseFromMenu(kTools, kTerminalItem);
  EXPECT_TRUE(Eventually([this] { return TerminalIsOpen(); }));
  EXPECT_TRUE(Eventually([this] { return !MenuItemEnabled(kTools, kTerminalItem); }));
}

TEST_F(Reading, TheTerminalScreensRowsAndButtons) {
  StartConnected("\"id\" -> line \"SIM-1\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  EXPECT_TRUE(Eventually([this] {
    const QStringList texts = Texts(kTerminal);
    const qsizetype command = texts.indexOf(QStringLiteral("[id]\r"));
    return command >= 0 && texts.value(command + 1) == QStringLiteral("SIM-1\r");
  })) << Texts(kTerminal).join(QLatin1Char('|')).toStdString();
  EXPECT_EQ(Buttons(kTerminal).size(), 12);
}

TEST_F(Reading, ABoxIsAnsweredWithItsButton) {
  StartConnected("* -> line \"OK\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  const QString box = QStringLiteral("^Quarn : Confirmation$");
  ChooseFromContextMenu(3);
  WaitForWindow(box);
  EXPECT_TRUE(Eventually([&] {
    return Buttons(box) == QStringList{QStringLiteral("OK"), QStringLiteral("CANCEL")};
  })) << Buttons(box).join(QLatin1Char('|')).toStdString();
  AnswerBox(box, QStringLiteral("CANCEL"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  ChooseFromContextMenu(3);
  AnswerBox(box, QStringLiteral("OK"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
}

}  // namespace
}  // namespace quarn::test
