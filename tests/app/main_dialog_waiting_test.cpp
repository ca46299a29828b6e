// What is asked for otherwise than by keys and clicks in the window: by an assistive tool, the system's own
// menu, another start, a file that was dropped before. It waits for the end of what is under way.

#include <QAbstractEventDispatcher>

#include "app/main_dialog_fixture.h"
#include "support/drags.h"
#include "ui/input_hold.h"

namespace quarn::test {
namespace {

const QString kLoadRefused =
    QStringLiteral("error/: Error//Config file not found./Click \"OK\" to quit loading.");

class MainDialogWaiting : public MainDialog {
 protected:
  void SetUp() override {
    MainDialog::SetUp();
    dialog.setAcceptDrops(true);
    dialog.StartTimer();
    hold.Begin();
  }
  /// Nothing has happened while input was held, and this does afterwards.
  void HappensOnlyAfterwards(const QStringList& expected) {
    hold.HoldFor(3 * PolledDialog::kTickMs);
    EXPECT_EQ(Happened(), QStringList());
    hold.End();
    EXPECT_TRUE(WaitUntil([this] { return !journal.isEmpty(); }));
    EXPECT_EQ(Happened(), expected);
  }

  InputHold hold;
};

TEST_F(MainDialogWaiting, AMenuItemThatAnAssistiveToolChooses) {
  program.userFile = m_folder + QStringLiteral("gone.qrn");
  dialog.UpdateMenuState();
  QAction* const close = dialog.findChild<QAction*>(QStringLiteral("closeFile"));
  ASSERT_NE(close, nullptr);
  close->trigger();
  HappensOnlyAfterwards(
      {QStringLiteral("yes or no/: Confirmation//Settings have been changed./Proceed without saving?")});
}

TEST_F(MainDialogWaiting, AFileOfAnotherStart) {
  dialog.TakeStartRequest(QStringLiteral("/nowhere/a.qrn"));
  HappensOnlyAfterwards({kLoadRefused});
}

TEST_F(MainDialogWaiting, AFileThatWasDroppedJustBefore) {
  hold.End();
  DraggedFile file(dialog, {40, 60}, Qt::CopyAction, Qt::NoModifier);
  ASSERT_EQ(file.Enter(), Qt::CopyAction);
  ASSERT_EQ(file.Drop(), Qt::CopyAction);
  hold.Begin();
  HappensOnlyAfterwards({kLoadRefused});
}

TEST_F(MainDialogWaiting, WhatIsAskedForWhileABoxIsUp) {
  hold.End();
  QDialog box;
  box.setModal(true);
  box.show();
  ASSERT_TRUE(WaitUntil([&] { return QApplication::activeModalWidget() == &box; }));
  dialog.TakeStartRequest(QStringLiteral("/nowhere/a.qrn"));
  int loops = 0;
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &box,
                   [&] { ++loops; });
  EXPECT_TRUE(WaitUntil([&] { return loops >= 5; }));
  EXPECT_EQ(Happened(), QStringList());
  box.close();
  EXPECT_TRUE(WaitUntil([this] { return !journal.isEmpty(); }));
  EXPECT_EQ(Happened(), QStringList{kLoadRefused});
}

}  // namespace
}  // namespace quarn::test
