#include "ui/input_hold.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QBasicTimer>
#include <QPointer>
#include <QPointingDevice>
#include <QPushButton>
#include <QTest>
#include <QWidget>
#include <QWindow>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "support/waits.h"

namespace quarn::test {
namespace {

using Clock = std::chrono::steady_clock;

/// Records its events.
class Recorder final : public QWidget {
 public:
  Recorder() {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    resize(100, 100);
    show();
    activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(this, kLongestWaitMs));
  }
  QStringList events;
  int timers = 0;
  int paints = 0;
  std::function<void()> painted;

 protected:
  bool event(QEvent* event) override {
    switch (event->type()) {
      case QEvent::KeyPress:
        events.append(QStringLiteral("key ") + static_cast<QKeyEvent*>(event)->text());
        break;
      case QEvent::MouseButtonPress:
        events.append(QStringLiteral("press"));
        break;
      case QEvent::MouseButtonRelease:
        events.append(QStringLiteral("release"));
        break;
      case QEvent::Wheel:
        events.append(QStringLiteral("wheel"));
        break;
      case QEvent::InputMethod:
        events.append(QStringLiteral("composed ") + static_cast<QInputMethodEvent*>(event)->commitString());
        break;
      case QEvent::Close:
        events.append(QStringLiteral("close"));
        break;
      case QEvent::Timer:
        ++timers;
        break;
      case QEvent::Paint:
        ++paints;
        if (painted) painted();
        break;
      default:
        break;
    }
    return QWidget::event(event);
  }
};

TEST(InputHold, KeepsKeysAndClicksAndHandsThemOnInOrder) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window.windowHandle(), 'a');
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
  QWheelEvent wheel(QPointF(10, 10), window.mapToGlobal(QPointF(10, 10)), QPoint(), QPoint(0, 120),
                    Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(window.windowHandle(), &wheel);
  QTest::keyClick(window.windowHandle(), 'b');
  hold.Pump();
  EXPECT_EQ(window.events, QStringList());
  hold.End();
  EXPECT_FALSE(hold.IsHolding());
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key a,press,release,wheel,key b"));
}

TEST(InputHold, PaintsButRunsNoTimer) {
  Recorder window;
  QBasicTimer timer;
  timer.start(1, &window);
  InputHold hold;
  hold.Begin();
  window.paints = 0;
  window.update();
  EXPECT_TRUE(WaitUntil([&] {
    hold.Pump();
    return window.paints > 0;
  }));
  window.timers = 0;
  for (int i = 0; i < 20; ++i) {
    QTest::qSleep(1);
    hold.Pump();
  }
  EXPECT_EQ(window.timers, 0);
  hold.End();
  EXPECT_TRUE(WaitUntil([&] { return window.timers > 0; }));
}

/// A press or release of a key, as reported by the system.
void Key(const Recorder& window, QEvent::Type type, Qt::Key key, bool repeat = false) {
  qt_handleKeyEvent(window.windowHandle(), type, key, Qt::NoModifier, QString(), repeat);
}

TEST(InputHold, NoticesEscape) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  EXPECT_FALSE(hold.EscapePressed());
  QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
  EXPECT_TRUE(hold.EscapePressed());
  hold.End();
  QCoreApplication::processEvents();
}

TEST(InputHold, AnEscapeThatIsUsedTakesWhatWasTypedAheadWithIt) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window.windowHandle(), 'a');
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
  QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
  hold.UseEscape();
  QTest::keyClick(window.windowHandle(), 'b');
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events, QStringList());
  QTest::keyClick(window.windowHandle(), 'c');
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key c"));
}

TEST(InputHold, AUsedEscapeLeavesCloseRequestsAndTheEndOfWhatBeganBefore) {
  Recorder window;
  InputHold hold;
  QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
  ASSERT_EQ(window.events.join(u','), QStringLiteral("press"));
  hold.Begin();
  QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
  QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
  window.windowHandle()->close();
  hold.UseEscape();
  hold.End();
  EXPECT_TRUE(WaitUntil([&] { return !window.isVisible(); }));
  EXPECT_EQ(window.events.join(u','), QStringLiteral("press,release,close"));
}

TEST(InputHold, AnEscapeThatIsDownIsSeenByTheHoldThatBegins) {
  Recorder window;
  InputHold hold;
  Key(window, QEvent::KeyPress, Qt::Key_Escape);
  // Another key ends the repeats of ESC, but ESC is still down.
  QTest::keyClick(window.windowHandle(), 'a');
  hold.Begin();
  EXPECT_TRUE(hold.EscapePressed());
  hold.UseEscape();
  hold.End();
  hold.Begin();
  EXPECT_TRUE(hold.EscapePressed()) << "down is down, for the next one as well";
  Key(window, QEvent::KeyRelease, Qt::Key_Escape);
  EXPECT_FALSE(hold.EscapePressed());
  hold.End();
  QCoreApplication::processEvents();
}

TEST(InputHold, TheRepeatsOfAnEscapeThatIsDownDoNotLetItUp) {
  Recorder window;
  InputHold hold;
  Key(window, QEvent::KeyPress, Qt::Key_Escape);
  Key(window, QEvent::KeyRelease, Qt::Key_Escape, true);
  hold.Begin();
  EXPECT_TRUE(hold.EscapePressed());
  Key(window, QEvent::KeyRelease, Qt::Key_Escape);
  hold.End();
  QCoreApplication::processEvents();
}

TEST(InputHold, AnEscapeIsNotDownForEverWhenNobodySawItLetGo) {
  auto closed = std::make_unique<Recorder>();
  InputHold hold;
  Key(*closed, QEvent::KeyPress, Qt::Key_Escape);
  // The window with the keyboard is gone; the key is released in another program.
  closed.reset();
  Recorder window;
  hold.Begin();
  EXPECT_FALSE(hold.EscapePressed());
  // A repeat shows that it is still down.
  Key(window, QEvent::KeyPress, Qt::Key_Escape, true);
  EXPECT_TRUE(hold.EscapePressed());
  Key(window, QEvent::KeyRelease, Qt::Key_Escape);
  hold.End();
  QCoreApplication::processEvents();
}

TEST(InputHold, AnEscapeThatIsHandedOnIsNotTakenForAKeyThatIsDown) {
  /// Deletes itself at its first key, so the key's release has no receiver.
  class Short final : public QWidget {
   protected:
    void keyPressEvent(QKeyEvent*) override { deleteLater(); }
  };
  QPointer<Short> window = new Short;
  window->show();
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window, kLongestWaitMs));
  Recorder other;
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window->windowHandle(), Qt::Key_Escape);
  hold.End();
  ASSERT_TRUE(WaitUntil([&] { return window.isNull(); }));
  hold.Begin();
  EXPECT_FALSE(hold.EscapePressed());
  hold.End();
}

TEST(InputHold, AnEscapeTypedBehindTheKeyThatBeginsTheNextHoldCountsForIt) {
  Recorder window;
  InputHold hold;
  /// The delivered key starts the next hold.
  class Beginner final : public QObject {
   public:
    explicit Beginner(InputHold* hold) : m_hold(hold) {}
    bool eventFilter(QObject*, QEvent* event) override {
      const bool begins =
          event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Return;
      if (begins) m_hold->Begin();
      return false;
    }

   private:
    InputHold* m_hold;
  };
  Beginner beginner(&hold);
  window.installEventFilter(&beginner);
  hold.Begin();
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) QTest::keyClick(window.windowHandle(), key);
  hold.End();
  ASSERT_TRUE(WaitUntil([&] { return hold.IsHolding(); }));
  EXPECT_TRUE(hold.EscapePressed());
  hold.End();
  QCoreApplication::processEvents();
}

TEST(InputHold, AnEscapeThatNobodyUsedIsHandedOn) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.size(), 1);
  // The next wait starts without it.
  hold.Begin();
  EXPECT_FALSE(hold.EscapePressed());
  hold.End();
}

/// With nothing else to wake it, the wait would last for a minute.
TEST(InputHold, AWaitEndsWhenAnotherThreadAsksItToLookAgain) {
  const Recorder window;
  InputHold hold;
  hold.Begin();
  std::atomic<bool> over = false;
  const auto began = Clock::now();
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    over = true;
    hold.LookAgain();
  });
  EXPECT_TRUE(hold.WaitUntil([&] { return over.load(); }, began + std::chrono::minutes(1)));
  EXPECT_LT(Clock::now() - began, std::chrono::seconds(30));
  other.join();
  hold.End();
}

TEST(InputHold, AWaitForNothingEndsAtItsTimeAndSleepsUntilThen) {
  const Recorder window;
  InputHold hold;
  hold.Begin();
  QCoreApplication::processEvents();
  int looks = 0;
  const auto end = Clock::now() + std::chrono::milliseconds(300);
  EXPECT_FALSE(hold.WaitUntil([&looks] { return ++looks < 0; }, end));
  EXPECT_GE(Clock::now(), end);
  EXPECT_LE(looks, 10) << "every 10 ms would be 30";
  hold.End();
}

TEST(InputHold, WindowsPaintDuringAWait) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  window.paints = 0;
  window.painted = [&hold] { hold.LookAgain(); };
  std::thread other([&] { QMetaObject::invokeMethod(&window, [&] { window.update(); }); });
  const auto began = Clock::now();
  EXPECT_TRUE(hold.WaitUntil([&] { return window.paints > 0; }, began + std::chrono::minutes(1)));
  EXPECT_LT(Clock::now() - began, std::chrono::seconds(30));
  other.join();
  hold.End();
}

/// The event is in the queue when the wait begins.
TEST(InputHold, AWaitWhoseTimeHasComeStillProcessesWhatIsPending) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  bool processed = false;
  QMetaObject::invokeMethod(
      &window, [&] { processed = true; }, Qt::QueuedConnection);
  EXPECT_FALSE(hold.WaitUntil([] { return false; }, Clock::now()));
  EXPECT_TRUE(processed);
  hold.End();
}

TEST(InputHold, ACloseWaits) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  window.windowHandle()->close();
  hold.Pump();
  EXPECT_TRUE(window.isVisible());
  hold.End();
  EXPECT_TRUE(WaitUntil([&] { return !window.isVisible(); }));
  EXPECT_TRUE(window.events.contains(QStringLiteral("close")));
}

TEST(InputHold, KeepsOneStepOfALongWayOfThePointer) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  for (int i = 0; i < 50; ++i) QTest::mouseMove(window.windowHandle(), QPoint(i, i));
  QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("press"));
  QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
}

TEST(InputHold, EachClickLandsWhereItWasMade) {
  Recorder window;
  QStringList clicked;
  std::vector<std::unique_ptr<QPushButton>> buttons;
  for (const char* name : {"A", "B"}) {
    auto button = std::make_unique<QPushButton>(QLatin1String(name), &window);
    button->setGeometry(static_cast<int>(buttons.size()) * 50, 0, 40, 40);
    button->show();
    QObject::connect(button.get(), &QPushButton::clicked,
                     [&clicked, name] { clicked.append(QLatin1String(name)); });
    buttons.push_back(std::move(button));
  }
  InputHold hold;
  hold.Begin();
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(20, 20));
  QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(70, 20));
  QTest::mouseMove(window.windowHandle(), QPoint(20, 90));
  hold.End();
  EXPECT_TRUE(clicked.isEmpty());
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked.join(u','), QStringLiteral("A,B"));
}

/// A mouse that is unplugged during a long wait takes its device with it.
TEST(InputHold, AClickOfADeviceThatIsGoneIsHandedOn) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  {
    const QPointingDevice mouse(QStringLiteral("mouse"), 1, QInputDevice::DeviceType::Mouse,
                                QPointingDevice::PointerType::Generic, QInputDevice::Capability::Position, 1,
                                3);
    const QPointF place(10, 10);
    QMouseEvent press(QEvent::MouseButtonPress, place, place, window.mapToGlobal(place), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier, &mouse);
    QCoreApplication::sendEvent(window.windowHandle(), &press);
    QMouseEvent release(QEvent::MouseButtonRelease, place, place, window.mapToGlobal(place), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier, &mouse);
    QCoreApplication::sendEvent(window.windowHandle(), &release);
  }
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("press,release"));
}

TEST(InputHold, NewerInputStaysBehindTheHeld) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window.windowHandle(), 'a');
  hold.End();
  // Before the event loop has run again.
  QKeyEvent newer(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, QStringLiteral("b"));
  QCoreApplication::sendEvent(window.windowHandle(), &newer);
  EXPECT_TRUE(window.events.isEmpty());
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key a,key b"));
  QTest::keyClick(window.windowHandle(), 'c');
  EXPECT_EQ(window.events.last(), QStringLiteral("key c"));
}

TEST(InputHold, AHoldThatAHeldKeyBeginsKeepsTheRest) {
  class Beginner final : public QObject {
   public:
    explicit Beginner(InputHold* hold) : m_hold(hold) {}
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_A)
        m_hold->Begin();
      return false;
    }

   private:
    InputHold* m_hold;
  };
  Recorder window;
  InputHold hold;
  Beginner beginner(&hold);
  window.installEventFilter(&beginner);
  hold.Begin();
  for (const char key : {'a', 'b'}) QTest::keyClick(window.windowHandle(), key);
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_TRUE(hold.IsHolding());
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key a"));
  QTest::keyClick(window.windowHandle(), 'c');
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key a,key b,key c"));
}

TEST(InputHold, DropsTheRepeatsOfAHeldKey) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  for (const bool repeat : {false, true, true}) {
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"), repeat);
    QCoreApplication::sendEvent(window.windowHandle(), &key);
  }
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("key a"));
}

TEST(InputHold, KeepsComposedTextAndMenuKeys) {
  Recorder window;
  InputHold hold;
  hold.Begin();
  QInputMethodEvent composed;
  composed.setCommitString(QStringLiteral("x"));
  QCoreApplication::sendEvent(&window, &composed);
  QAction action;
  QShortcutEvent shortcut(QKeySequence(QStringLiteral("Ctrl+S")), 1);
  QCoreApplication::sendEvent(&action, &shortcut);
  EXPECT_TRUE(window.events.isEmpty());
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.events.join(u','), QStringLiteral("composed x"));
}

TEST(InputHold, AWindowThatIsGoneGetsNothing) {
  auto window = std::make_unique<Recorder>();
  InputHold hold;
  hold.Begin();
  QTest::keyClick(window->windowHandle(), 'a');
  window.reset();
  hold.End();
  QCoreApplication::processEvents();
  EXPECT_FALSE(hold.IsHolding());
}

}  // namespace
}  // namespace quarn::test
