#include "terminal/terminal_keys.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

KeyAction ActionOf(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
  return ClassifyKey(key, modifiers, text).action;
}

TEST(ClassifyKey, EditingKeys) {
  EXPECT_EQ(ActionOf(Qt::Key_Return), KeyAction::Send);
  EXPECT_EQ(ActionOf(Qt::Key_Enter, Qt::KeypadModifier), KeyAction::Send);
  EXPECT_EQ(ActionOf(Qt::Key_Down), KeyAction::ScrollDown);
  EXPECT_EQ(ActionOf(Qt::Key_Up), KeyAction::ScrollUp);
  EXPECT_EQ(ActionOf(Qt::Key_Left), KeyAction::MoveLeft);
  EXPECT_EQ(ActionOf(Qt::Key_Right), KeyAction::MoveRight);
  EXPECT_EQ(ActionOf(Qt::Key_Space, {}, QStringLiteral(" ")), KeyAction::Space);
  EXPECT_EQ(ActionOf(Qt::Key_Delete, {}, QStringLiteral("\x7f")), KeyAction::Delete);
  EXPECT_EQ(ActionOf(Qt::Key_Backspace, {}, QStringLiteral("\b")), KeyAction::Backspace);
  EXPECT_EQ(ActionOf(Qt::Key_Escape, {}, QStringLiteral("\x1b")), KeyAction::Swallow);
  EXPECT_EQ(ActionOf(Qt::Key_F11), KeyAction::RecallLast);
  EXPECT_EQ(ActionOf(Qt::Key_Insert), KeyAction::ToggleInsert);
}

TEST(ClassifyKey, EditingKeysMeanTheSameWithControlAndShift) {
  for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Down, Qt::Key_Up, Qt::Key_Left, Qt::Key_Right,
                        Qt::Key_Space, Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_F11, Qt::Key_Insert}) {
    const KeyAction alone = ActionOf(key);
    EXPECT_NE(alone, KeyAction::Swallow);
    EXPECT_EQ(ActionOf(key, Qt::ControlModifier), alone) << key;
    EXPECT_EQ(ActionOf(key, Qt::ShiftModifier), alone) << key;
  }
}

TEST(ClassifyKey, FunctionKeysNameTheStoredCommand) {
  for (int n = 0; n < 10; ++n) {
    for (const Qt::KeyboardModifiers modifiers :
         {Qt::KeyboardModifiers{}, Qt::KeyboardModifiers(Qt::ControlModifier)}) {
      const KeyCommand command = ClassifyKey(Qt::Key_F1 + n, modifiers, QString());
      EXPECT_EQ(command.action, KeyAction::LoadStored);
      EXPECT_EQ(command.index, n);
    }
  }
  EXPECT_EQ(ActionOf(Qt::Key_F12), KeyAction::Default);
}

TEST(ClassifyKey, ControlWithALetter) {
  EXPECT_EQ(ActionOf(Qt::Key_C, Qt::ControlModifier, QStringLiteral("\x03")), KeyAction::Copy);
  EXPECT_EQ(ActionOf(Qt::Key_X, Qt::ControlModifier, QStringLiteral("\x18")), KeyAction::Cut);
  EXPECT_EQ(ActionOf(Qt::Key_Z, Qt::ControlModifier, QStringLiteral("\x1a")), KeyAction::Clear);
  EXPECT_EQ(ActionOf(Qt::Key_V, Qt::ControlModifier, QStringLiteral("\x16")), KeyAction::Paste);
}

TEST(ClassifyKey, AnyOtherKeyWithControlIsSwallowed) {
  EXPECT_EQ(ActionOf(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01")), KeyAction::Swallow);
  EXPECT_EQ(ActionOf(Qt::Key_Tab, Qt::ControlModifier), KeyAction::Swallow);
  EXPECT_EQ(ActionOf(Qt::Key_Control, Qt::ControlModifier), KeyAction::Swallow);
  EXPECT_EQ(ActionOf(Qt::Key_1, Qt::ControlModifier, QStringLiteral("1")), KeyAction::Swallow);
}

TEST(ClassifyKey, PrintableTextIsTyped) {
  EXPECT_EQ(ActionOf(Qt::Key_A, {}, QStringLiteral("a")), KeyAction::Character);
  EXPECT_EQ(ActionOf(Qt::Key_A, Qt::ShiftModifier, QStringLiteral("A")), KeyAction::Character);
  EXPECT_EQ(ActionOf(Qt::Key_Question, Qt::ShiftModifier, QStringLiteral("?")), KeyAction::Character);
  EXPECT_EQ(ActionOf(Qt::Key_mu, {}, QStringLiteral("µ")), KeyAction::Character);
  EXPECT_EQ(ActionOf(Qt::Key_At, Qt::ControlModifier | Qt::AltModifier, QStringLiteral("@")),
            KeyAction::Character);
}

TEST(ClassifyKey, TheRestBelongsToTheDialog) {
  EXPECT_EQ(ActionOf(Qt::Key_Tab, {}, QStringLiteral("\t")), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_Backtab, Qt::ShiftModifier), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_Shift, Qt::ShiftModifier), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_F4, Qt::AltModifier), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_A, Qt::AltModifier, QStringLiteral("a")), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_V, Qt::MetaModifier, QStringLiteral("v")), KeyAction::Default);
  EXPECT_EQ(ActionOf(Qt::Key_Home), KeyAction::Default);
}

}  // namespace
}  // namespace quarn
