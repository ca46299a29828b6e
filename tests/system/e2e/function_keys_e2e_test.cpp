#include "system/e2e/dialogs.h"

namespace quarn::test {
namespace {

class FunctionKeys : public Dialogs {
 protected:
  void StartWithTable() {
    StartConnected("* -> line \"OK\"", {{QStringLiteral("MEM3"), QStringLiteral("old")}});
    OpenDialog(QStringLiteral("Tools"), QStringLiteral("Function Key Table"), kTable);
    NoteSettingsFile();
    ASSERT_TRUE(Eventually([this] { return TextOfControl(kTable, kField) == QLatin1String("old"); }));
  }
  void StartEditing() {
    ClickButton(kTable, QStringLiteral("EDIT"), [this] { return IsEnabled(kTable, kField); });
  }
  /// Clicks into the field of F4 and puts another text there.
  void EditTo(const QString& text) { EditTo(kField, text); }
  void EditTo(const QString& name, const QString& text) {
    ClickUntil(kTable, name, [&] {
      const std::optional<Control> field = FindControl(kTable, name);
      return field && field->focused;
    });
    Press({QStringLiteral("ctrl+a")});
    Type(text);
    EXPECT_TRUE(Eventually([&] { return TextOfControl(kTable, name) == text; }))
        << TextOfControl(kTable, name).toStdString();
  }
  void FinishEditing() {
    ClickButton(kTable, QStringLiteral("ENTER"), [this] { return !IsEnabled(kTable, kField); });
  }
  /// Presses F4, with the keyboard in the table, until the command line holds this.
  void F4Loads(const QString& command) {
    Focus(WaitForWindow(kTable));
    EXPECT_TRUE(Eventually([&] {
      Press({QStringLiteral("F4")});
      return Eventually([&] { return CommandLineHolds(command); }, kOneTryMs);
    })) << command.toStdString();
  }
  bool CommandLineHolds(const QString& command) {
    return TextOfControl(kTerminal, QStringLiteral("Command line")) == command;
  }
  /// Does this in the table, once more where it was lost, until the command line holds the command.
  void CommandLineBecomes(const QString& command, const std::function<void()>& act) {
    const auto holds = [&] { return CommandLineHolds(command); };
    EXPECT_TRUE(Eventually([&] {
      Focus(WaitForWindow(kTable));
      act();
      return Eventually(holds, 2 * kOneTryMs);
    })) << command.toStdString();
  }
  void ClickWithCtrl(const QString& button) {
    const std::optional<Control> found = FindControl(kTable, button);
    ASSERT_TRUE(found);
    const QPoint place = found->place.center();
    desktop.Input({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
                   QStringLiteral("keydown"), QStringLiteral("ctrl"), QStringLiteral("click"),
                   QStringLiteral("1"), QStringLiteral("keyup"), QStringLiteral("ctrl")});
  }
  void AskUndo(const QString& answer) { Ask("UNDO", kUndo, kUndoQuestion, answer); }
  void Ask(const char* button, const QString& box, const QString& question, const QString& answer) {
    ClickButton(kTable, QLatin1String(button), [&] { return !desktop.Windows(box).isEmpty(); });
    EXPECT_TRUE(BoxSays(box, {question}));
    AnswerBox(box, answer);
  }

  const QString kTable = QStringLiteral("^Quarn - Function Key Table$");
  const QString kField = QStringLiteral("MEM3");
  const QString kUndo = QStringLiteral("^Quarn - Confirmation$");
  const QString kSave = QStringLiteral("^Quarn -  Confirmation$");
  const QString kUndoQuestion = QStringLiteral("OK to discard the updated data ?");
  const QString kSaveQuestion = QStringLiteral("Is it OK to save the updated data ?");
};

TEST_F(FunctionKeys, EditedTextIsLoadedAtOnceAndTakenBack) {
  StartWithTable();
  EXPECT_FALSE(IsEnabled(kTable, kField));
  EXPECT_FALSE(IsEnabled(kTable, QStringLiteral("SAVE")));
  EXPECT_FALSE(IsEnabled(kTable, QStringLiteral("UNDO")));
  StartEditing();
  EXPECT_FALSE(IsEnabled(kTable, kOk));
  EXPECT_FALSE(IsEnabled(kTable, QStringLiteral("SEND")));
  EXPECT_FALSE(IsEnabled(kTable, QStringLiteral("F4")));
  EditTo(QStringLiteral("new"));
  FinishEditing();
  F4Loads(QStringLiteral("new"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("new\r"));
  EXPECT_TRUE(FileIsUnchanged());
  AskUndo(kCancel);
  EXPECT_EQ(TextOfControl(kTable, kField), QStringLiteral("new"));
  AskUndo(kOk);
  EXPECT_TRUE(Eventually([this] { return TextOfControl(kTable, kField) == QLatin1String("old"); }));
  F4Loads(QStringLiteral("old"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("new\rold\r"));
  EXPECT_TRUE(FileIsUnchanged());
  PressOk(kTable);
}

TEST_F(FunctionKeys, SavedTextIsInTheFileAndSent) {
  StartWithTable();
  StartEditing();
  EditTo(QStringLiteral("saved"));
  FinishEditing();
  Ask("SAVE", kSave, kSaveQuestion, kNo);
  EXPECT_TRUE(FileIsUnchanged());
  Ask("SAVE", kSave, kSaveQuestion, kYes);
  EXPECT_TRUE(FileBecomes("MEM3", "saved"));
  ClickUntil(kTable, QStringLiteral("F4"), [this] { return CommandLineHolds(QStringLiteral("saved")); });
  // Once only: each click sends.
  Focus(WaitForWindow(kTable));
  ClickButton(kTable, QStringLiteral("SEND"));
  EXPECT_TRUE(WireBecomes("saved\r"));
  ClickCloseBox(kTable);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(FunctionKeys, AllTenAreEditedSavedAndLoaded) {
  StartWithTable();
  const QStringList commands{"one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten"};
  StartEditing();
  QList<QPair<QByteArray, QByteArray>> values;
  for (int i = 0; i < commands.size(); ++i) {
    const QString field = QStringLiteral("MEM%1").arg(i);
    EditTo(field, commands[i]);
    values.append({field.toLatin1(), commands[i].toLatin1()});
  }
  FinishEditing();
  EXPECT_TRUE(FileIsUnchanged());
  Ask("SAVE", kSave, kSaveQuestion, kYes);
  EXPECT_TRUE(FileBecomes(values));
  for (int i = 0; i < commands.size(); ++i) {
    ClickUntil(kTable, QStringLiteral("F%1").arg(i + 1), [&] { return CommandLineHolds(commands[i]); });
  }
  CommandLineBecomes(QStringLiteral("tentwo"), [this] { ClickWithCtrl(QStringLiteral("F2")); });
  // The keys go on as the last click did.
  CommandLineBecomes(QStringLiteral("tentwofive"), [this] { Press({QStringLiteral("F5")}); });
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("tentwofive\r"));
  PressOk(kTable);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(FunctionKeys, TheTableStaysWhileItIsEdited) {
  StartWithTable();
  StartEditing();
  EditTo(QStringLiteral("new"));
  Focus(WaitForWindow(kTable));
  Press({QStringLiteral("alt+F4")});
  Acknowledge(QStringLiteral("^Quarn : Warning$"),
              {QStringLiteral("Quit \"EDIT\" mode to close this dialog.")});
  EXPECT_TRUE(IsEnabled(kTable, kField));
  EXPECT_EQ(TextOfControl(kTable, kField), QStringLiteral("new"));
  FinishEditing();
  Choose(kFile, QStringLiteral("Restore Defaults"));
  Answer({QStringLiteral("Are you sure you want to restore the default settings?")}, kYes);
  Acknowledge(kInformation,
              {QStringLiteral("COM port is undefined."), QStringLiteral("Sellect a COM port to connect.")});
  EXPECT_TRUE(WaitForNoWindow(kTable));
}

}  // namespace
}  // namespace quarn::test
