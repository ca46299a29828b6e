#include "ui/box_shown_again_linux.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <functional>

#include "support/dialog_controls.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

constexpr qint64 kLater = ShowAgainRule::kAnswerMs;

// When to show the box again.

TEST(ShowAgainRule, EachWindowThatTakesTheKeyboard) {
  ShowAgainRule rule;
  rule.Show(0);
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 1));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 2));
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 3));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 4));
}

TEST(ShowAgainRule, NotTheWindowThatTheSystemChoosesWhenTheBoxGoes) {
  ShowAgainRule rule;
  rule.Show(0);
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 1));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10));
  EXPECT_FALSE(rule.Take(KeyboardIn::Elsewhere, 11));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 12));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 9 + kLater));
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 9 + kLater));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 9 + kLater)) << "now the box is no longer awaited";
}

TEST(ShowAgainRule, NotTheWindowThatHadAnEarlierBox) {
  ShowAgainRule rule;
  rule.Show(100);
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 101)) << "the earlier box has just gone";
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 102));
}

TEST(ShowAgainRule, AgainWhereTheBoxDoesNotGetTheKeyboard) {
  ShowAgainRule rule;
  rule.Show(10);
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10 + kLater));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 11 + kLater)) << "the wait begins anew";
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10 + 2 * kLater));
}

TEST(ShowAgainRule, NotForOtherPrograms) {
  ShowAgainRule rule;
  rule.Show(0);
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 1));
  EXPECT_FALSE(rule.Take(KeyboardIn::Elsewhere, 2));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 3)) << "the person comes back by way of it";
}

// What becomes of the box.

/// Counts how often a window is shown.
class Shows final : public QObject {
 public:
  explicit Shows(QObject& window) { window.installEventFilter(this); }
  int count = 0;

 protected:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Show) ++count;
    return false;
  }
};

class ModalBox final : public QDialog {
 public:
  ModalBox() : layout(this), first(QStringLiteral("first")), second(QStringLiteral("second")) {
    setModal(true);
    layout.addWidget(&first);
    layout.addWidget(&second);
  }
  QVBoxLayout layout;
  QPushButton first;
  QPushButton second;

 protected:
  void showEvent(QShowEvent* event) override {
    QDialog::showEvent(event);
    first.setFocus();
  }
};

/// What the system says when a person has clicked on the window.
void Click(QWidget& window) { window.windowHandle()->requestActivate(); }

constexpr int kAnswer = 7;

/// Runs the box, calls `during` when it is active, and answers it. Returns kAnswer, unless the box's event
/// loop has ended before.
int RunAndClose(QDialog& box, const std::function<void()>& during) {
  QTimer::singleShot(0, &box, [&] {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&box, kLongestWaitMs));
    during();
    QTimer::singleShot(0, &box, [&box] { box.done(kAnswer); });
  });
  return box.exec();
}

class ShownAgainBox : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(ShowActive(other));
    ASSERT_NO_FATAL_FAILURE(ShowActive(active));
  }
  QDialog other;
  QDialog active;
  ModalBox box;
  const ShownAgain order;
};

TEST_F(ShownAgainBox, StaysModalAndRunningOverTheClickedWindow) {
  const Shows shows(box);
  const int result = RunAndClose(box, [&] {
    box.second.setFocus();
    for (QDialog* clicked : {&other, &active, &other}) {
      const int before = shows.count;
      Click(*clicked);
      ASSERT_TRUE(WaitUntil([&] { return shows.count > before && box.isActiveWindow(); }));
      EXPECT_EQ(shows.count, before + 1);
      EXPECT_EQ(box.windowHandle()->transientParent(), clicked->windowHandle());
      EXPECT_EQ(QGuiApplication::modalWindow(), box.windowHandle());
      EXPECT_TRUE(box.second.hasFocus());
      EXPECT_EQ(box.result(), 0);
    }
  });
  EXPECT_EQ(result, kAnswer) << "its event loop has ended before";
}

TEST_F(ShownAgainBox, LeavesItsOrderToTheBoxOverIt) {
  const Shows shows(box);
  RunAndClose(box, [&] {
    ModalBox upper;
    const Shows upperShows(upper);
    RunAndClose(upper, [&] {
      const int before = upperShows.count;
      const int lowerBefore = shows.count;
      Click(box);
      EXPECT_TRUE(WaitUntil([&] { return upperShows.count > before && upper.isActiveWindow(); }));
      EXPECT_EQ(upper.windowHandle()->transientParent(), box.windowHandle());
      EXPECT_EQ(shows.count, lowerBefore);
    });
  });
}

TEST_F(ShownAgainBox, ThatIsClosedMeanwhileStaysClosed) {
  const Shows shows(box);
  int before = 0;
  RunAndClose(box, [&] {
    before = shows.count;
    QObject::connect(
        qGuiApp, &QGuiApplication::focusWindowChanged, &box, [&] { box.done(0); }, Qt::SingleShotConnection);
    Click(other);
    EXPECT_TRUE(WaitUntil([&] { return !box.isVisible(); }));
  });
  QCoreApplication::processEvents();
  EXPECT_EQ(shows.count, before);
  EXPECT_FALSE(box.isVisible());
}

// Qt's own dialog is a box like all others, and so is the question that it asks itself.
TEST_F(ShownAgainBox, ThatIsAFileDialogWithAQuestion) {
  QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("there.qrn")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  QFileDialog dialog(&active, QStringLiteral("Save"), folder.path());
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.selectFile(file.fileName());
  const Shows shows(dialog);
  int questions = 0;
  const auto question = [&] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); };
  // Runs in the event loop of the question.
  const auto answer = [&] {
    QMessageBox* const asks = question();
    ASSERT_NE(asks, nullptr);
    EXPECT_TRUE(QTest::qWaitForWindowActive(asks, kLongestWaitMs));
    const Shows questionShows(*asks);
    const int before = shows.count;
    Click(other);
    EXPECT_TRUE(WaitUntil([&] { return questionShows.count == 1 && asks->isActiveWindow(); }));
    EXPECT_EQ(shows.count, before);
    ++questions;
    asks->button(QMessageBox::No)->click();
  };
  RunAndClose(dialog, [&] {
    const int before = shows.count;
    Click(other);
    EXPECT_TRUE(WaitUntil([&] { return shows.count > before && dialog.isActiveWindow(); }));
    EXPECT_EQ(shows.count, before + 1);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
      if (question() == nullptr) return;
      poll.stop();
      QTimer::singleShot(0, &dialog, answer);
    });
    poll.start(1);
    static_cast<QDialog&>(dialog).accept();
  });
  EXPECT_EQ(questions, 1);
}

TEST_F(ShownAgainBox, ThatIsTheSystemsOwnIsLeftAlone) {
  const Shows shows(box);
  RunAndClose(box, [&] {
    box.setAttribute(Qt::WA_DontShowOnScreen);
    const int before = shows.count;
    Click(other);
    EXPECT_TRUE(WaitUntil([&] { return other.isActiveWindow(); }));
    // What the click has asked for comes before this.
    QCoreApplication::processEvents();
    EXPECT_EQ(shows.count, before);
  });
}

}  // namespace
}  // namespace quarn::test
