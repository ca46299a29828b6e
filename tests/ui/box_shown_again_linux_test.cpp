#include "ui/box_shown_again_linux.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QPushButton>
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
  ShowAgainRule rule(0);
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 1));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 2));
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 3));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 4));
}

TEST(ShowAgainRule, NotTheWindowThatTheSystemChoosesWhenTheBoxGoes) {
  ShowAgainRule rule(0);
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 1));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10));
  EXPECT_FALSE(rule.Take(KeyboardIn::Elsewhere, 11));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 12));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 9 + kLater));
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 9 + kLater));
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 9 + kLater)) << "now the box is no longer awaited";
}

TEST(ShowAgainRule, NotTheWindowThatHadAnEarlierBox) {
  ShowAgainRule rule(100);
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 101)) << "the earlier box has just gone";
  EXPECT_FALSE(rule.Take(KeyboardIn::Box, 102));
}

TEST(ShowAgainRule, AgainWhereTheBoxDoesNotGetTheKeyboard) {
  ShowAgainRule rule(10);
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10 + kLater));
  EXPECT_FALSE(rule.Take(KeyboardIn::AnotherWindow, 11 + kLater)) << "the wait begins anew";
  EXPECT_TRUE(rule.Take(KeyboardIn::AnotherWindow, 10 + 2 * kLater));
}

TEST(ShowAgainRule, NotForOtherPrograms) {
  ShowAgainRule rule(0);
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
};

TEST_F(ShownAgainBox, StaysModalAndRunningOverTheClickedWindow) {
  const ShownAgain order(box);
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
  const ShownAgain order(box);
  const Shows shows(box);
  RunAndClose(box, [&] {
    ModalBox upper;
    const ShownAgain upperOrder(upper);
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
  const ShownAgain order(box);
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

}  // namespace
}  // namespace quarn::test
