#include "dialogs/function_key_table_dialog_fixture.h"

namespace quarn::test {
namespace {

class FunctionKeyTableDialogKeys : public FunctionKeyTableDialogFixture {
 protected:
  /// The controls that Tab reaches, until the first one has the focus again.
  static QList<int> TabsFrom(QWidget& first) {
    first.setFocus();
    QList<int> ids;
    do {
      ids.append(QApplication::focusWidget()->property(kControlIdProperty).toInt());
      quarn::test::Press(Qt::Key_Tab);
    } while (QApplication::focusWidget() != &first && ids.size() < 30);
    return ids;
  }
};

TEST_F(FunctionKeyTableDialogKeys, ButtonsRequestTheStoredCommand) {
  OpenTable();
  for (int number = 1; number <= 10; ++number) {
    state.requests.functionKey.reset();
    const bool control = number % 2 == 0;
    ClickOn(Key(number), control ? Qt::ControlModifier : Qt::NoModifier);
    EXPECT_EQ(state.requests.functionKey, number - 1);
    EXPECT_EQ(state.requests.functionKeyCtrl, control) << number;
  }
  EXPECT_FALSE(state.requests.focus) << "no Terminal Screen is open";
  state.open.Add(Window::TerminalScreen);
  ClickOn(Key(1));
  EXPECT_TRUE(state.requests.focus);
}

TEST_F(FunctionKeyTableDialogKeys, KeysRequestTheStoredCommandWithTheRecordedCtrlState) {
  OpenTable();
  for (const bool recorded : {false, true}) {
    ClickOn(Key(1), recorded ? Qt::ControlModifier : Qt::NoModifier);
    for (int i = 0; i < 10; ++i) {
      state.requests.functionKey.reset();
      quarn::test::Press(Qt::Key(Qt::Key_F1 + i), recorded ? Qt::NoModifier : Qt::ControlModifier);
      EXPECT_EQ(state.requests.functionKey, i);
      EXPECT_EQ(state.requests.functionKeyCtrl, recorded);
    }
  }
  EXPECT_FALSE(state.requests.focus);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "F10 opens no menu";
}

TEST_F(FunctionKeyTableDialogKeys, KeysWorkInAFieldToo) {
  OpenTable();
  ClickCommand(kEdit);
  ClickOn(Field(6));
  ASSERT_EQ(QApplication::focusWidget(), &Field(6));
  quarn::test::Press(Qt::Key_F10);
  EXPECT_EQ(state.requests.functionKey, 9);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) quarn::test::Press(key);
  EXPECT_FALSE(state.requests.send);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(Command(kEdit).text(), QStringLiteral("ENTER")) << "only the button leaves edit mode";
  EXPECT_EQ(Field(6).text(), QStringLiteral("function-7"));
}

TEST_F(FunctionKeyTableDialogKeys, EnterSendsWhereverTheFocusIs) {
  OpenTable();
  for (const int id : {kOk, kEdit, kSend, 1001}) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
      state.requests.send = false;
      Command(id).setFocus();
      quarn::test::Press(key);
      EXPECT_TRUE(state.requests.send) << id;
    }
  }
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(Command(kEdit).text(), QStringLiteral("EDIT"));
  EXPECT_FALSE(state.requests.sendAction);
  EXPECT_FALSE(state.requests.functionKey);
}

TEST_F(FunctionKeyTableDialogKeys, EnterAndEscapeOnTheEditButtonDoNothingInEditMode) {
  OpenTable();
  ClickCommand(kEdit);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    QTest::keyClick(&Command(kEdit), key);
  }
  EXPECT_EQ(Command(kEdit).text(), QStringLiteral("ENTER"));
  EXPECT_FALSE(state.requests.send);
  EXPECT_TRUE(dialog->isVisible());
}

TEST_F(FunctionKeyTableDialogKeys, EscapeDoesNothing) {
  OpenTable();
  quarn::test::Press(Qt::Key_Escape);
  QTest::keyClick(dialog, Qt::Key_Escape);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_TRUE(state.open.Contains(Window::FunctionKeyTable));
}

TEST_F(FunctionKeyTableDialogKeys, AKeyHeldDownAsksOnce) {
  OpenTable();
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_F2}) {
    QKeyEvent repeat(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(&Command(kOk), &repeat);
    EXPECT_TRUE(repeat.isAccepted());
  }
  EXPECT_FALSE(state.requests.send);
  EXPECT_FALSE(state.requests.functionKey);
}

TEST_F(FunctionKeyTableDialogKeys, KeysWithAltAreNotForIt) {
  OpenTable();
  quarn::test::Press(Qt::Key_F4, Qt::AltModifier);
  quarn::test::Press(Qt::Key_Return, Qt::AltModifier);
  EXPECT_FALSE(state.requests.functionKey);
  EXPECT_FALSE(state.requests.send);
}

TEST_F(FunctionKeyTableDialogKeys, SendNeedsAnOpenTerminalScreen) {
  OpenTable();
  ClickCommand(kSend);
  EXPECT_FALSE(state.requests.sendAction);
  EXPECT_FALSE(state.requests.focus);
  state.open.Add(Window::TerminalScreen);
  ClickCommand(kSend);
  EXPECT_TRUE(state.requests.sendAction);
  EXPECT_TRUE(state.requests.focus);
}

TEST_F(FunctionKeyTableDialogKeys, TabGoesInReadingOrder) {
  OpenTable();
  EXPECT_EQ(TabsFrom(Key(1)),
            (QList<int>{1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009, 1010, kEdit, kOk, kSend}));
  ClickCommand(kEdit);
  EXPECT_EQ(TabsFrom(Field(0)), QList<int>(kFieldIds.begin(), kFieldIds.end()) + QList<int>({kUndo, kEdit}));
  Retype(3, "another");
  ClickCommand(kEdit);
  EXPECT_EQ(TabsFrom(Key(1)), (QList<int>{1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009, 1010, kUndo,
                                          kSave, kEdit, kOk, kSend}));
}

TEST_F(FunctionKeyTableDialogKeys, WorksWithTheTerminalScreen) {
  Connect("* -> line \"OK\"");
  settings.mem[1] = QStringLiteral("two");
  settings.mem[4] = QStringLiteral("five");
  Open();
  OpenTable();
  const auto loads = [this](const QString& text) {
    return Until([this] { return !state.requests.functionKey && !state.requests.focus; }) &&
           commandLine.Text() == text;
  };
  ClickOn(Key(2));
  EXPECT_TRUE(loads(QStringLiteral("two"))) << commandLine.Text().toStdString();
  EXPECT_EQ(commandLine.CursorPos(), 3);
  ClickOn(Key(2), Qt::ControlModifier);
  EXPECT_TRUE(loads(QStringLiteral("twotwo"))) << commandLine.Text().toStdString();
  QTest::keyClick(&Command(kOk), Qt::Key_F5);
  EXPECT_TRUE(loads(QStringLiteral("twotwofive"))) << commandLine.Text().toStdString();
  EXPECT_EQ(log.LineCount(), 0) << "nothing is sent yet";
  QTest::keyClick(&Command(kOk), Qt::Key_Return);
  EXPECT_TRUE(Until([this] { return log.LineCount() == 2; }));
  EXPECT_EQ(instrument->Received(), "twotwofive\r");
  ClickCommand(kSend);
  EXPECT_TRUE(Until([this] { return log.LineCount() == 4; }));
}

TEST_F(FunctionKeyTableDialogKeys, EditedCommandLoadsBeforeItIsSaved) {
  Open();
  OpenTable();
  Edit(3, "fresh");
  EXPECT_TRUE(Until([this] { return !state.requests.refresh.Contains(Window::TerminalScreen); }));
  EXPECT_EQ(Button("F 4").toolTip(), QStringLiteral("fresh"));
  ClickOn(Key(4));
  EXPECT_TRUE(Until([this] { return commandLine.Text() == QStringLiteral("fresh"); }));
  EXPECT_EQ(ReadValue(m_file, keys::kMem[3]), QStringLiteral("function-4"));
}

}  // namespace
}  // namespace quarn::test
