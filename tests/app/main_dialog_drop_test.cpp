// Files that another program drags onto the main dialog. A program that is told of a move deletes its file.

#include "app/main_dialog_fixture.h"
#include "support/drags.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

constexpr QPoint kInside(40, 60);

class MainDialogDrop : public MainDialog {
 protected:
  void SetUp() override {
    MainDialog::SetUp();
    dialog.setAcceptDrops(true);
  }
};

TEST_F(MainDialogDrop, AFileIsCopiedWhateverTheSourceProposes) {
  for (const Qt::KeyboardModifiers held : {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier}) {
    DraggedFile file(dialog, kInside, Qt::CopyAction | Qt::MoveAction, held);
    EXPECT_EQ(file.Enter(), Qt::CopyAction) << int(held);
    EXPECT_EQ(file.Drop(), Qt::CopyAction) << int(held);
    EXPECT_TRUE(WaitUntil([this] { return !journal.isEmpty(); }));
    EXPECT_EQ(Happened(), QStringList{"error/: Error//Config file not found./Click \"OK\" to quit loading."});
  }
}

TEST_F(MainDialogDrop, AFileThatCanOnlyBeMovedIsRefused) {
  for (const Qt::DropActions offered : {Qt::DropActions(Qt::MoveAction), Qt::MoveAction | Qt::LinkAction}) {
    DraggedFile file(dialog, kInside, offered, Qt::NoModifier);
    EXPECT_EQ(file.Enter(), Qt::IgnoreAction) << int(offered);
    EXPECT_EQ(file.Drop(), Qt::IgnoreAction) << "also from a source that did not ask";
    QCoreApplication::processEvents();
    EXPECT_EQ(Happened(), QStringList());
  }
}

}  // namespace
}  // namespace quarn::test
