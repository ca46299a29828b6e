#include "ui/input_hold.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include "support/waits.h"

namespace quarn::test {
namespace {

class Listener final : public QWidget {
 public:
  Listener() {
    resize(100, 100);
    show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(this, kLongestWaitMs));
  }
  QString typed;
  int timers = 0;
  int paints = 0;

 protected:
  void keyPressEvent(QKeyEvent* event) override { typed += event->text(); }
  void timerEvent(QTimerEvent* /*event*/) override { ++timers; }
  void paintEvent(QPaintEvent* /*event*/) override { ++paints; }
};

TEST(InputHoldPause, LastsAsLongAsItIsTold) {
  InputHold hold;
  QElapsedTimer time;
  time.start();
  hold.HoldFor(50);
  EXPECT_GE(time.elapsed(), 50);
}

TEST(InputHoldPause, WindowsPaintAndNothingElse) {
  Listener window;
  InputHold hold;
  window.startTimer(1);
  window.paints = 0;
  window.update();
  for (const QChar key : QStringLiteral("ab")) {
    QCoreApplication::postEvent(window.windowHandle(),
                                new QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, key));
  }
  hold.HoldFor(50);
  EXPECT_GE(window.paints, 1);
  EXPECT_EQ(window.timers, 0);
  EXPECT_EQ(window.typed, QString());
  EXPECT_TRUE(WaitUntil([&] { return window.typed == QStringLiteral("ab") && window.timers > 0; }));
}

TEST(InputHoldPause, CanBeUsedAgain) {
  Listener window;
  InputHold hold;
  for (const QChar key : QStringLiteral("abc")) {
    QCoreApplication::postEvent(window.windowHandle(),
                                new QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, key));
    hold.HoldFor(1);
  }
  EXPECT_TRUE(WaitUntil([&] { return window.typed == QStringLiteral("abc"); }));
}

}  // namespace
}  // namespace quarn::test
