#include "ui/paste_field.h"

#include <gtest/gtest.h>

#include "support/dialog_controls.h"
#include "support/drags.h"

namespace quarn::test {
namespace {

TEST(PasteField, TakesTheNameOfAFileAndNeverTheFile) {
  QDialog window;
  auto* field = new PasteField(&window, [](QClipboard::Mode) { return std::nullopt; });
  field->resize(200, 30);
  ASSERT_NO_FATAL_FAILURE(ShowActive(window));
  for (const Qt::KeyboardModifiers held : {Qt::NoModifier, Qt::ShiftModifier}) {
    field->clear();
    DraggedFile file(*field, {20, 10}, Qt::CopyAction | Qt::MoveAction, held);
    EXPECT_EQ(file.Enter(), Qt::CopyAction) << int(held);
    EXPECT_EQ(file.Move(), Qt::CopyAction) << int(held);
    EXPECT_EQ(file.Drop(), Qt::CopyAction) << int(held);
    EXPECT_EQ(field->text(), QStringLiteral("/not/there.qrn"));
  }
  field->clear();
  DraggedFile file(*field, {20, 10}, Qt::MoveAction, Qt::NoModifier);
  EXPECT_EQ(file.Enter(), Qt::IgnoreAction);
  EXPECT_EQ(file.Move(), Qt::IgnoreAction);
  EXPECT_EQ(file.Drop(), Qt::IgnoreAction);
  EXPECT_EQ(field->text(), QString());
}

}  // namespace
}  // namespace quarn::test
