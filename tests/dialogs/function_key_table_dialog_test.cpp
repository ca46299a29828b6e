#include <QAccessible>
#include <QContextMenuEvent>
#include <QMenu>

#include "dialogs/function_key_table_dialog_fixture.h"
#include "support/message_texts.h"
#include "support/window_places.h"

namespace quarn::test {
namespace {

const QString kUndoQuestion = QStringLiteral("simple question/OK to discard the updated data ?");
const QString kSaveQuestion = QStringLiteral("simple yes or no/Is it OK to save the updated data ?");
const QString kWarning = QStringLiteral("information/: Warning/Quit \"EDIT\" mode to close this dialog.//");

class FunctionKeyTableDialog : public FunctionKeyTableDialogFixture {};

TEST_F(FunctionKeyTableDialog, OpensWithTheStoredCommands) {
  settings.mem[4] = QString();
  OpenTable();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Quarn - Function Key Table"));
  EXPECT_TRUE(state.open.Contains(Window::FunctionKeyTable));
  EXPECT_FALSE(dialog->isModal());
  EXPECT_TRUE(dialog->testAttribute(Qt::WA_DeleteOnClose));
  EXPECT_EQ(ShownTexts(), Listed(settings.mem));
  EXPECT_EQ(EnabledControls(), "keys OK SEND ");
  EXPECT_EQ(QApplication::focusWidget(), &Command(kOk));
  EXPECT_EQ(Field(0).palette().color(QPalette::Disabled, QPalette::Text),
            dialog->palette().color(QPalette::Active, QPalette::WindowText))
      << "the commands can be read";
}

TEST_F(FunctionKeyTableDialog, EditSwitchesTheMode) {
  OpenTable();
  ClickCommand(kEdit);
  EXPECT_EQ(Command(kEdit).text(), QStringLiteral("ENTER"));
  EXPECT_EQ(EnabledControls(), "fields UNDO ");
  EXPECT_FALSE(state.requests.refresh.Contains(Window::TerminalScreen));
  ClickCommand(kEdit);
  EXPECT_EQ(Command(kEdit).text(), QStringLiteral("EDIT"));
  EXPECT_EQ(EnabledControls(), "keys OK SEND ");
  EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
}

TEST_F(FunctionKeyTableDialog, EditsAreInForceAtOnceAndUndoTakesThemBack) {
  OpenTable();
  const QByteArray before = FileBytes();
  Edit(3, "new text");
  EXPECT_EQ(settings.mem[3], QStringLiteral("new text"));
  EXPECT_EQ(FileBytes(), before);
  EXPECT_EQ(EnabledControls(), "keys UNDO SAVE OK SEND ");
  messages.answers = {false, true};
  state.requests.refresh.Remove(Window::TerminalScreen);
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList{kUndoQuestion});
  EXPECT_EQ(settings.mem[3], QStringLiteral("new text"));
  EXPECT_FALSE(state.requests.refresh.Contains(Window::TerminalScreen));
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList{kUndoQuestion});
  EXPECT_EQ(settings.mem[3], QStringLiteral("function-4"));
  EXPECT_EQ(Field(3).text(), QStringLiteral("function-4"));
  EXPECT_TRUE(state.requests.refresh.Contains(Window::TerminalScreen));
  EXPECT_EQ(EnabledControls(), "keys OK SEND ") << "nothing is left to undo or to save";
  EXPECT_EQ(FileBytes(), before);
}

TEST_F(FunctionKeyTableDialog, UndoInEditModeCountsTheFields) {
  OpenTable();
  ClickCommand(kEdit);
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList()) << "nothing differs yet";
  Retype(0, "x");
  messages.answers = {true};
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList{kUndoQuestion});
  EXPECT_EQ(Field(0).text(), QStringLiteral("function-1"));
  EXPECT_EQ(EnabledControls(), "fields ");
}

TEST_F(FunctionKeyTableDialog, SaveWritesOnlyTheStoredCommands) {
  OpenTable();
  Edit(3, "*RST;A=B");
  const QByteArray before = FileBytes();
  messages.answers = {false, true};
  ClickCommand(kSave);
  EXPECT_EQ(FileBytes(), before);
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), (QStringList{kSaveQuestion, kSaveQuestion}));
  EXPECT_EQ(FileBytes(), QByteArray(before).replace("MEM3=function-4\r\n", "MEM3=*RST;A=B\r\n"));
  EXPECT_EQ(EnabledControls(), "keys OK SEND ") << "nothing is left to undo or to save";
  ClickCommand(kSave);
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList()) << "nothing changed since";
}

TEST_F(FunctionKeyTableDialog, WhatWouldNotFitIntoTheFileIsNotSavedAndThatIsTold) {
  OpenTable();
  const QByteArray before = FileBytes();
  ClickCommand(kEdit);
  for (int i = 0; i < 6; ++i) {
    Field(i).selectAll();
    Field(i).insert(QString(2000, u'\u20AC'));
    EXPECT_EQ(Field(i).text().size(), 1018);
  }
  ClickCommand(kEdit);
  messages.answers = {true, true};
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), (QStringList{kSaveQuestion, kTooLong}));
  EXPECT_EQ(FileBytes(), before);
  Edit(5, "short");
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), QStringList{kSaveQuestion});
  EXPECT_EQ(ReadValue(m_file, keys::kMem[4]), QString(1018, u'\u20AC'));
  EXPECT_EQ(ReadValue(m_file, keys::kMem[5]), QStringLiteral("short"));
}

TEST_F(FunctionKeyTableDialog, SaveAfterUndoAsksNothing) {
  OpenTable();
  const QByteArray before = FileBytes();
  Edit(3, "x");
  messages.answers = {true};
  ClickCommand(kUndo);
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), QStringList{kUndoQuestion});
  EXPECT_EQ(FileBytes(), before);
}

TEST_F(FunctionKeyTableDialog, SaveAsksNothingWhereNothingDiffersAnyMore) {
  OpenTable();
  const QString former = settings.mem[3];
  Edit(3, "x");
  // Before the button has become grey.
  settings.mem[3] = former;
  messages.answers = {true};
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), QStringList());
}

TEST_F(FunctionKeyTableDialog, SaveIntoAFileThatCannotBeWrittenTellsNobody) {
  for (const bool there : {true, false}) {
    SCOPED_TRACE(there);
    const QByteArray before = FileBytes();
    if (there) {
      ASSERT_TRUE(QFile::setPermissions(m_file, QFile::ReadOwner));
    } else {
      // On some systems a read-only file cannot be removed.
      ASSERT_TRUE(QFile::setPermissions(m_file, QFile::ReadOwner | QFile::WriteOwner));
      ASSERT_TRUE(QFile::remove(m_file));
    }
    OpenTable();
    Edit(0, there ? "first" : "second");
    messages.answers = {true};
    ClickCommand(kSave);
    EXPECT_EQ(Shown(), QStringList{kSaveQuestion});
    EXPECT_EQ(FileBytes(), there ? before : QByteArray());
    EXPECT_EQ(settings.mem[0], there ? QStringLiteral("first") : QStringLiteral("second"));
    ClickCommand(kSave);
    EXPECT_EQ(Shown(), QStringList()) << "what was saved last is what the fields show";
    delete dialog.data();
  }
}

TEST_F(FunctionKeyTableDialog, TextThatWasNotTypedIsReadWhenEditModeIsLeft) {
  OpenTable();
  ClickCommand(kEdit);
  QAccessibleInterface* field = QAccessible::queryAccessibleInterface(&Field(3));
  ASSERT_NE(field, nullptr);
  field->setText(QAccessible::Value, QStringLiteral("spoken"));
  EXPECT_EQ(settings.mem[3], QStringLiteral("function-4"));
  ClickCommand(kEdit);
  EXPECT_EQ(settings.mem[3], QStringLiteral("spoken"));
  EXPECT_EQ(EnabledControls(), "keys UNDO SAVE OK SEND ");
}

TEST_F(FunctionKeyTableDialog, UndoReadsTextThatWasNotTyped) {
  OpenTable();
  ClickCommand(kEdit);
  QAccessible::queryAccessibleInterface(&Field(3))->setText(QAccessible::Value, QStringLiteral("spoken"));
  messages.answers = {true};
  ClickCommand(kUndo);
  EXPECT_EQ(Shown(), QStringList{kUndoQuestion});
  EXPECT_EQ(Field(3).text(), QStringLiteral("function-4"));
}

TEST_F(FunctionKeyTableDialog, OkClosesAndTheNextOneStandsInItsPlace) {
  OpenTable();
  ASSERT_TRUE(FrameIsThere(*dialog));
  dialog->move(120, 80);
  ASSERT_TRUE(StandsAt(*dialog, [] { return QPoint(120, 80); }));
  const QRect place = dialog->frameGeometry();
  ClickCommand(kOk);
  EXPECT_FALSE(state.open.Contains(Window::FunctionKeyTable));
  EXPECT_TRUE(state.requests.refresh.Contains(Window::MainDialog));
  EXPECT_EQ(tableRect, place);
  EXPECT_TRUE(Until([this] { return dialog.isNull(); }));
  OpenTable();
  EXPECT_TRUE(StandsAt(*dialog, [] { return QPoint(120, 80); }));
  EXPECT_EQ(dialog->frameGeometry(), place);
}

TEST_F(FunctionKeyTableDialog, RefusesToCloseInEditMode) {
  OpenTable();
  ClickCommand(kEdit);
  dialog->close();
  EXPECT_EQ(Shown(), QStringList{kWarning});
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_TRUE(state.open.Contains(Window::FunctionKeyTable));
  EXPECT_TRUE(tableRect.isNull());
  ClickCommand(kEdit);
  dialog->close();
  EXPECT_EQ(Shown(), QStringList());
  EXPECT_FALSE(state.open.Contains(Window::FunctionKeyTable));
}

TEST_F(FunctionKeyTableDialog, ClosesOnRequestButNotInEditMode) {
  OpenTable();
  ClickCommand(kEdit);
  state.requests.close.Add(Window::FunctionKeyTable);
  ASSERT_TRUE(Until([this] { return !messages.shown.isEmpty(); }));
  EXPECT_EQ(Shown(), QStringList{kWarning});
  Tick();
  EXPECT_EQ(Shown(), QStringList()) << "it warns once for each request";
  EXPECT_TRUE(dialog->isVisible());
  ClickCommand(kEdit);
  state.requests.close.Add(Window::FunctionKeyTable);
  ASSERT_TRUE(Until([this] { return dialog.isNull(); }));
  EXPECT_FALSE(state.requests.close.Contains(Window::FunctionKeyTable));
  EXPECT_FALSE(state.open.Contains(Window::FunctionKeyTable));
}

TEST_F(FunctionKeyTableDialog, ReloadsOnRequest) {
  OpenTable();
  Edit(1, "mine");
  settings.mem.fill(QStringLiteral("new"));
  state.requests.refresh.Add(Window::FunctionKeyTable);
  ASSERT_TRUE(Until([this] { return !state.requests.refresh.Contains(Window::FunctionKeyTable); }));
  EXPECT_EQ(ShownTexts(), Listed(settings.mem));
  EXPECT_EQ(EnabledControls(), "keys OK SEND ");
}

TEST_F(FunctionKeyTableDialog, ReloadReplacesWhatIsBeingTyped) {
  OpenTable();
  ClickCommand(kEdit);
  Retype(1, "mine");
  settings.mem.fill(QStringLiteral("new"));
  state.requests.refresh.Add(Window::FunctionKeyTable);
  ASSERT_TRUE(Until([this] { return !state.requests.refresh.Contains(Window::FunctionKeyTable); }));
  EXPECT_EQ(ShownTexts(), Listed(settings.mem));
  EXPECT_EQ(EnabledControls(), "fields UNDO ");
  ClickCommand(kEdit);
  EXPECT_EQ(settings.mem[1], QStringLiteral("new"));
}

TEST_F(FunctionKeyTableDialog, RequestsFromBeforeItWasOpenedDoNotConcernIt) {
  state.requests.close.Add(Window::FunctionKeyTable);
  state.requests.refresh.Add(Window::FunctionKeyTable);
  OpenTable();
  Tick();
  EXPECT_TRUE(dialog && dialog->isVisible());
}

TEST_F(FunctionKeyTableDialog, RequestsWaitUntilItsMessageIsGone) {
  OpenTable();
  Edit(0, "mine");
  messages.answers = {true};
  messages.whileShown = [this] {
    state.requests.close.Add(Window::FunctionKeyTable);
    Tick();
    EXPECT_TRUE(dialog && dialog->isVisible());
    dialog->close();
    EXPECT_TRUE(dialog->isVisible());
  };
  ClickCommand(kSave);
  EXPECT_EQ(Shown(), QStringList{kSaveQuestion});
  EXPECT_EQ(ReadValue(m_file, keys::kMem[0]), QStringLiteral("mine"));
  messages.whileShown = nullptr;
  EXPECT_TRUE(Until([this] { return dialog.isNull(); }));
}

TEST_F(FunctionKeyTableDialog, TheWarningIsShownOnce) {
  OpenTable();
  ClickCommand(kEdit);
  messages.whileShown = [this] {
    messages.whileShown = nullptr;
    state.requests.close.Add(Window::FunctionKeyTable);
    dialog->close();
    Tick();
    EXPECT_EQ(messages.shown.size(), 1);
  };
  dialog->close();
  EXPECT_TRUE(dialog->isVisible());
}

TEST_F(FunctionKeyTableDialog, FieldsHoldTheLongestCommandAndNoLineBreak) {
  OpenTable();
  ClickCommand(kEdit);
  EXPECT_EQ(Field(0).maxLength(), kMaxStoredCommand);
  QApplication::clipboard()->setText(QString(kMaxStoredCommand + 1, u'x'));
  ClickOn(Field(0));
  Field(0).selectAll();
  QTest::keyClick(&Field(0), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Field(0).text(), QString(kMaxStoredCommand, u'x'));
  QApplication::clipboard()->setText(QStringLiteral("one\r\ntwo\nthree"));
  ClickOn(Field(1));
  Field(1).selectAll();
  QTest::keyClick(&Field(1), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Field(1).text(), QStringLiteral("onetwothree"));
  ClickCommand(kEdit);
  EXPECT_EQ(settings.mem[1], QStringLiteral("onetwothree"));
  messages.answers = {true};
  const QByteArray before = FileBytes();
  ClickCommand(kSave);
  EXPECT_EQ(FileBytes(), QByteArray(before)
                             .replace("MEM0=function-1\r\n", "MEM0=" + QByteArray(1018, 'x') + "\r\n")
                             .replace("MEM1=function-2\r\n", "MEM1=onetwothree\r\n"));
}

TEST_F(FunctionKeyTableDialog, TextIsPastedFromTheMenuOfAField) {
  OpenTable();
  ClickCommand(kEdit);
  QApplication::clipboard()->setText(QStringLiteral("pa\nsted"));
  ClickOn(Field(1));
  Field(1).selectAll();
  const QPoint place(5, 5);
  QContextMenuEvent asked(QContextMenuEvent::Mouse, place, Field(1).mapToGlobal(place));
  QApplication::sendEvent(&Field(1), &asked);
  const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(menu, nullptr);
  QStringList enabled;
  for (QAction* action : menu->actions()) {
    if (action->isEnabled() && !action->isSeparator())
      enabled.append(action->text().remove(QLatin1Char('&')));
  }
  EXPECT_EQ(enabled, QStringList({"Cut", "Copy", "Paste", "Delete", "Select All"}));
  QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_P);
  EXPECT_TRUE(Until([this] { return Field(1).text() == QLatin1String("pasted"); }))
      << Field(1).text().toStdString();
}

TEST_F(FunctionKeyTableDialog, LongTextsFromAFileAreNotCut) {
  constexpr int kLong = kMaxStoredCommand + 2;
  settings.mem[8] = QString(kLong, u'y');
  OpenTable();
  EXPECT_EQ(Field(8).text().size(), kLong);
  EXPECT_EQ(Field(8).cursorPosition(), 0);
  ClickCommand(kEdit);
  ClickCommand(kEdit);
  EXPECT_EQ(settings.mem[8].size(), kLong);
}

}  // namespace
}  // namespace quarn::test
