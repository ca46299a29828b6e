#include "dialogs/terminal_fixture.h"

namespace quarn::test {
namespace {

class TerminalKeys : public TerminalFixture {};

TEST_F(TerminalKeys, EnterSendsTheCommandAndShowsTheAnswer) {
  Connect("\"id\" -> line \"SIM\"");
  Open();
  Type("id");
  Press(Qt::Key_Return);
  EXPECT_EQ(instrument->Received(), "id\r");
  EXPECT_EQ(window->RowText(0), QStringLiteral("[id]\r"));
  EXPECT_EQ(window->RowText(1), QStringLiteral("SIM\r"));
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]"));
  EXPECT_EQ(commandLine.Text(), QStringLiteral("id"));
  EXPECT_EQ(window->SendCounter(), 1U);
}

TEST_F(TerminalKeys, TheKeypadEnterSendsToo) {
  Connect("* -> line \"OK\"");
  Open();
  Type("x");
  Press(Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(instrument->Received(), "x\r");
}

TEST_F(TerminalKeys, TheSendButtonSendsWithoutCountingAnEnter) {
  Connect("* -> line \"OK\"");
  Open();
  Type("x");
  Click("SEND");
  EXPECT_EQ(instrument->Received(), "x\r");
  EXPECT_EQ(window->SendCounter(), 0U);
}

TEST_F(TerminalKeys, AnEmptyLineIsSentOnlyWhenAllowed) {
  Connect("* -> line \"OK\"");
  Open();
  Press(Qt::Key_Return);
  EXPECT_EQ(log.LineCount(), 0);
  settings.enblNull = QStringLiteral("ON");
  Press(Qt::Key_Return);
  EXPECT_EQ(instrument->Received(), "\r");
  EXPECT_EQ(window->RowText(0), QStringLiteral("[]\r"));
}

TEST_F(TerminalKeys, AutoClearEmptiesTheLineAfterSending) {
  Connect("* -> line \"OK\"");
  settings.autoClr = QStringLiteral("ON");
  Open();
  Type("abc");
  Press(Qt::Key_Return);
  EXPECT_TRUE(commandLine.Text().isEmpty());
  EXPECT_EQ(commandLine.CursorPos(), 0);
}

TEST_F(TerminalKeys, WithoutAPortTheErrorSaysSoAndNothingIsSent) {
  Open();
  Type("id");
  Press(Qt::Key_Return);
  ASSERT_EQ(messages.shown.size(), 1);
  EXPECT_EQ(messages.shown[0],
            QStringLiteral("error/: Error//COM port is not available./Check \"Detailed COM Port List\"."));
  EXPECT_EQ(log.LineCount(), 0);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("id"));
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Quarn - Terminal Screeen (COM3-NC)  N- INS"));
}

TEST_F(TerminalKeys, AFullLogSendsNothingAndSaysSo) {
  Connect("* -> line \"OK\"");
  log.AppendLogText(QByteArray("x\r").repeated(4000));
  ASSERT_EQ(log.LineCount(), 4000);
  const int top = log.TopLine();
  Open();
  Type("id");
  Button("F 1").setFocus();
  Press(Qt::Key_Return);
  ASSERT_EQ(messages.shown.size(), 1);
  EXPECT_EQ(messages.shown[0], QStringLiteral("transient/Error: No remaining memory for log buffer"));
  EXPECT_EQ(instrument->Received(), "");
  EXPECT_EQ(log.TopLine(), top);
  EXPECT_EQ(log.LineCount(), 4000);
  EXPECT_TRUE(Button("SEND").hasFocus());
}

TEST_F(TerminalKeys, The49thCharacterIsRefusedAndABlankIsNot) {
  Open();
  Type("123456789012345678901234567890123456789012345678");
  Type("X");
  EXPECT_EQ(commandLine.Text().size(), 48);
  EXPECT_FALSE(commandLine.Text().contains(u'X'));
  Press(Qt::Key_Space);
  EXPECT_EQ(commandLine.Text().size(), 49);
  EXPECT_TRUE(commandLine.Text().endsWith(u' '));
}

TEST_F(TerminalKeys, ABlankGoesToTheEndAndPressesNoButton) {
  Connect("* -> line \"OK\"");
  Open();
  ASSERT_TRUE(Button("SEND").hasFocus());
  Type("ab");
  Press(Qt::Key_Left);
  Press(Qt::Key_Space);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("ab "));
  EXPECT_EQ(instrument->Received(), "");
}

TEST_F(TerminalKeys, EditingKeys) {
  Open();
  Type("abcd");
  Press(Qt::Key_Left);
  Press(Qt::Key_Left);
  Press(Qt::Key_Backspace);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("acd"));
  Press(Qt::Key_Delete);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("ad"));
  Press(Qt::Key_Right);
  Type("!");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("ad!"));
  EXPECT_EQ(DisplayedCommand(), commandLine.DisplayText());
}

TEST_F(TerminalKeys, InsertTogglesTheModeInTheTitle) {
  Open();
  Press(Qt::Key_Insert);
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("N- OVR")));
  Type("ab");
  Press(Qt::Key_Left);
  Type("X");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("aX"));
  Press(Qt::Key_Insert);
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("N- INS")));
}

TEST_F(TerminalKeys, AHeldInsertKeyTogglesOnce) {
  Open();
  Press(Qt::Key_Insert);
  for (int i = 0; i < 3; ++i) {
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Insert, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(QApplication::focusWidget(), &repeat);
  }
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("N- OVR")));
}

TEST_F(TerminalKeys, ComposedTextIsTyped) {
  Open();
  const auto commit = [](const char16_t* text) {
    QInputMethodEvent event;
    event.setCommitString(QString::fromUtf16(text));
    QApplication::sendEvent(QApplication::focusWidget(), &event);
  };
  Type("a");
  commit(u"\u00e9");
  commit(u"^ x");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("a\u00e9^ x"));
  commit(u"\a\u001b\u007f\r\n");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("a\u00e9^ x")) << "control characters are not typed";
  Press(Qt::Key_Insert);
  for (int i = 0; i < 5; ++i) Press(Qt::Key_Left);
  commit(u"b");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("b\u00e9^ x"));
  commit(QString(60, u'z').toStdU16String().c_str());
  EXPECT_EQ(commandLine.Text().size(), 48);
  QInputMethodQueryEvent query(Qt::ImEnabled);
  QApplication::sendEvent(QApplication::focusWidget(), &query);
  EXPECT_TRUE(query.value(Qt::ImEnabled).toBool());
}

TEST_F(TerminalKeys, EscapeDoesNotCloseTheWindow) {
  Open();
  Type("ab");
  Press(Qt::Key_Escape);
  Tick();
  ASSERT_TRUE(window);
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(commandLine.Text(), QStringLiteral("ab"));
}

TEST_F(TerminalKeys, FunctionKeysLoadAndDoNotSend) {
  Connect("* -> line \"OK\"");
  for (std::size_t n = 0; n < settings.mem.size(); ++n) settings.mem[n] = QStringLiteral("mem%1").arg(n);
  Open();
  for (int n = 0; n < 10; ++n) {
    Press(static_cast<Qt::Key>(Qt::Key_F1 + n));
    EXPECT_EQ(commandLine.Text(), QStringLiteral("mem%1").arg(n));
    EXPECT_EQ(commandLine.CursorPos(), 4);
    EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
  }
  Press(Qt::Key_F3, Qt::ControlModifier);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("mem9mem2"));
  EXPECT_EQ(instrument->Received(), "");
}

TEST_F(TerminalKeys, FunctionKeyButtonsLoadAndAppendWithControl) {
  settings.mem[0] = QStringLiteral("one");
  settings.mem[9] = QStringLiteral("ten");
  Open();
  Click("F 10");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("ten"));
  QTest::keyPress(QApplication::focusWidget(), Qt::Key_Control, Qt::ControlModifier);
  Click("F 1", Qt::ControlModifier);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("tenone"));
}

TEST_F(TerminalKeys, ClearLeavesTheCursor) {
  Open();
  Type("hello");
  Click("CLEAR");
  EXPECT_TRUE(commandLine.Text().isEmpty());
  EXPECT_EQ(commandLine.CursorPos(), 5);
  EXPECT_EQ(DisplayedCommand(), commandLine.DisplayText());
  Press(Qt::Key_Insert);
  Type("x");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("x"));
}

TEST_F(TerminalKeys, F11BringsTheLastCommandBack) {
  Connect("* -> line \"OK\"");
  settings.autoClr = QStringLiteral("ON");
  Open();
  Type("meas?");
  Press(Qt::Key_Return);
  ASSERT_TRUE(commandLine.Text().isEmpty());
  Press(Qt::Key_F11);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("meas?"));
}

TEST_F(TerminalKeys, ClipboardKeys) {
  Open();
  Type("abc");
  Press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Clipboard(), QStringLiteral("abc"));
  EXPECT_EQ(commandLine.Text(), QStringLiteral("abc"));
  Type("d");
  Press(Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(Clipboard(), QStringLiteral("abcd"));
  EXPECT_TRUE(commandLine.Text().isEmpty());
  EXPECT_EQ(commandLine.CursorPos(), 0);
  QApplication::clipboard()->setText(QStringLiteral("a\tb\r\nc") + QString(60, u'z'));
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("abc") + QString(45, u'z'));
  EXPECT_EQ(commandLine.CursorPos(), 48);
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_TRUE(commandLine.Text().isEmpty());
  EXPECT_EQ(commandLine.CursorPos(), 0);
}

TEST_F(TerminalKeys, PasteOfAnEmptyClipboardChangesNothing) {
  Open();
  Type("abc");
  QApplication::clipboard()->clear();
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("abc"));
}

TEST_F(TerminalKeys, OtherKeysWithControlDoNothing) {
  Open();
  Type("abc");
  Press(Qt::Key_A, Qt::ControlModifier);
  Press(Qt::Key_Q, Qt::ControlModifier);
  EXPECT_EQ(commandLine.Text(), QStringLiteral("abc"));
  EXPECT_TRUE(window->isVisible());
}

TEST_F(TerminalKeys, TabMovesBetweenTheButtonsAndTypesNothing) {
  Open();
  const QWidget* before = QApplication::focusWidget();
  Press(Qt::Key_Tab);
  EXPECT_NE(QApplication::focusWidget(), before);
  Type("a");
  EXPECT_EQ(commandLine.Text(), QStringLiteral("a"));
}

TEST_F(TerminalKeys, ArrowsScrollTheLog) {
  log.AppendLogText("1\r2\r3\r");
  Open();
  Press(Qt::Key_Down);
  EXPECT_EQ(window->RowText(0), QStringLiteral("2\r"));
  EXPECT_TRUE(window->windowTitle().endsWith(QStringLiteral("  [ 2-3  ]")));
  Press(Qt::Key_Down);
  Press(Qt::Key_Down);
  EXPECT_EQ(window->RowText(0), QStringLiteral("3\r"));
  Press(Qt::Key_Up);
  Press(Qt::Key_Up);
  Press(Qt::Key_Up);
  EXPECT_EQ(window->RowText(0), QStringLiteral("1\r"));
}

TEST_F(TerminalKeys, TheWheelScrollsTheLog) {
  log.AppendLogText("1\r2\r3\r");
  Open();
  const auto turn = [this](int delta) {
    QWheelEvent event(QPointF(50, 50), window->mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(window, &event);
  };
  turn(-120);
  EXPECT_EQ(window->RowText(0), QStringLiteral("2\r"));
  turn(120);
  EXPECT_EQ(window->RowText(0), QStringLiteral("1\r"));
  turn(0);
  EXPECT_EQ(window->RowText(0), QStringLiteral("1\r"));
}

TEST_F(TerminalKeys, EveryTurnOfTheWheelRedrawsTheLogAndIsPassedOn) {
  log.AppendLogText("1\r2\r");
  Open();
  for (const int delta : {0, 120, -120, -120}) {
    // Something that only a redraw shows.
    settings.lineNum = settings.lineNum == u"ON" ? QStringLiteral("OFF") : QStringLiteral("ON");
    QWheelEvent event(QPointF(50, 50), window->mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    event.accept();
    QApplication::sendEvent(window, &event);
    EXPECT_EQ(window->RowText(0).contains(u'|'), settings.lineNum == u"ON") << delta;
    EXPECT_FALSE(event.isAccepted()) << delta;
  }
  EXPECT_EQ(log.TopLine(), 1);
}

TEST_F(TerminalKeys, KeysWorkWithTheButtonsHidden) {
  Connect("* -> line \"OK\"");
  settings.funcKey = QStringLiteral("OFF");
  Open();
  Type("id");
  Press(Qt::Key_Space);
  Press(Qt::Key_Return);
  EXPECT_EQ(instrument->Received(), "id \r");
}

}  // namespace
}  // namespace quarn::test
