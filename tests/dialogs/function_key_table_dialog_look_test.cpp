// How the Function Key Table looks: what its controls are called and where they stand.

#include "dialogs/function_key_table_dialog_fixture.h"

namespace quarn::test {
namespace {

class FunctionKeyTableDialogLook : public FunctionKeyTableDialogFixture {};

TEST_F(FunctionKeyTableDialogLook, StandsInColumnsWithTheCommandsBelow) {
  OpenTable();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(Field(i).x(), Field(0).x()) << i;
    EXPECT_EQ(Key(i + 1).x(), Key(1).x()) << i;
    EXPECT_FALSE(Field(i).geometry().intersects(Key(i + 1).geometry())) << i;
    if (i > 0) {
      EXPECT_GT(Field(i).y(), Field(i - 1).geometry().bottom()) << i;
    }
  }
  int right = 0;
  for (const int id : {kUndo, kSave, kEdit, kOk, kSend}) {
    EXPECT_GT(Command(id).y(), Field(9).geometry().bottom()) << id;
    EXPECT_EQ(Command(id).y(), Command(kUndo).y()) << id;
    EXPECT_GT(Command(id).x(), right) << id;
    right = Command(id).geometry().right();
  }
}

TEST_F(FunctionKeyTableDialogLook, NamesItsControls) {
  OpenTable();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(Field(i).accessibleName(), QStringLiteral("MEM%1").arg(i));
    EXPECT_EQ(Field(i).objectName(), QStringLiteral("MEM%1").arg(i));
    EXPECT_EQ(Key(i + 1).text(), QStringLiteral("F%1").arg(i + 1));
  }
  const std::array<std::pair<int, const char*>, 5> commands{
      {{kUndo, "UNDO"}, {kSave, "SAVE"}, {kEdit, "EDIT"}, {kOk, "OK"}, {kSend, "SEND"}}};
  for (const auto& [id, text] : commands) {
    EXPECT_EQ(Command(id).text(), QLatin1String(text));
    EXPECT_EQ(Command(id).objectName(), QLatin1String(text));
    EXPECT_TRUE(Command(id).isVisible());
  }
}

TEST_F(FunctionKeyTableDialogLook, LongTextsAreSeenFromTheirStartAfterEditing) {
  OpenTable();
  ClickCommand(kEdit);
  Retype(0, QByteArray(64, 'W').constData());
  EXPECT_EQ(Field(0).cursorPosition(), 64);
  ClickCommand(kEdit);
  EXPECT_EQ(Field(0).cursorPosition(), 0);
}

TEST_F(FunctionKeyTableDialogLook, ClipsNothingInAnyMode) {
  for (const int percent : {100, 150}) {
    const FontScale scale(percent);
    OpenTable();
    for (int mode = 0; mode < 2; ++mode, ClickCommand(kEdit)) {
      for (const QPushButton* button : dialog->findChildren<QPushButton*>()) {
        const QString text = button->text();
        EXPECT_GE(button->height(), button->sizeHint().height()) << text.toStdString();
        EXPECT_GT(button->width(), button->fontMetrics().horizontalAdvance(text) + 8) << text.toStdString();
        EXPECT_TRUE(dialog->rect().contains(button->geometry())) << text.toStdString();
      }
      for (int i = 0; i < 10; ++i) {
        EXPECT_GE(Field(i).height(), Field(i).sizeHint().height());
        EXPECT_GE(Field(i).width(), 50 * Field(i).fontMetrics().averageCharWidth());
        EXPECT_TRUE(dialog->rect().contains(Field(i).geometry()));
        EXPECT_EQ(Field(i).geometry().center().y(), Key(i + 1).geometry().center().y());
      }
    }
    delete dialog.data();
  }
}

TEST_F(FunctionKeyTableDialogLook, EachFieldSaysWhichKeyItBelongsTo) {
  OpenTable();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(Field(i).accessibleDescription(), QStringLiteral("Stored command of F%1").arg(i + 1));
  }
}

}  // namespace
}  // namespace quarn::test
