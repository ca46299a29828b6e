#include "app/splash_page.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QScreen>
#include <QTimer>

#include "identity.h"
#include "support/dialog_controls.h"
#include "support/window_places.h"
#include "ui/placement.h"

namespace quarn::test {
namespace {

TEST(SplashPage, SaysWhatIsStarting) {
  const CSplashPage splash;
  EXPECT_EQ(Control<QLabel>(splash, 1165)->text(), QStringLiteral("Quarn  (Ver. 1.00)"));
  EXPECT_EQ(Control<QLabel>(splash, 1169)->text(),
            QStringLiteral("Build ") + QLatin1String(identity::kBuildDate));
  EXPECT_EQ(Control<QLabel>(splash, 1166)->text(), QStringLiteral("Serial Port Terminal"));
  EXPECT_EQ(Control<QLabel>(splash, 1168)->text(), QStringLiteral("Halvo"));
  EXPECT_FALSE(splash.findChild<QLabel*>(QStringLiteral("logo"))->pixmap(Qt::ReturnByValue).isNull());
  for (const QLabel* label : splash.findChildren<QLabel*>()) {
    EXPECT_EQ(label->font().weight() == QFont::Bold, label == Control<QLabel>(splash, 1165));
  }
}

TEST(SplashPage, HasNoCaptionAndIsOnTop) {
  const CSplashPage splash;
  EXPECT_TRUE(splash.windowFlags().testFlag(Qt::FramelessWindowHint));
  EXPECT_TRUE(splash.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_TRUE(splash.windowTitle().isEmpty());
  EXPECT_TRUE(splash.isModal());
}

TEST(SplashPage, HasItsSizeInDialogUnitsAndClipsNothing) {
  for (const int percent : {100, 125, 150, 175}) {
    const FontScale scale(percent);
    CSplashPage splash;
    ShowActive(splash);
    EXPECT_EQ(splash.size(), MapDialogUnits(splash.font(), {0, 0, 220, 82}).size()) << percent;
    ExpectNothingClipped(splash);
  }
}

TEST(SplashPage, StandsInTheMiddle) {
  CSplashPage splash;
  ShowActive(splash);
  EXPECT_TRUE(StandsOnScreen(splash, [&](QSize screen) { return CentredPosition(screen, splash.size()); }));
}

TEST(SplashPage, StaysTwoSecondsAndEndsWithOne) {
  CSplashPage splash;
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(splash.exec(), 1);
  EXPECT_GE(clock.elapsed(), 1950);
  EXPECT_LT(clock.elapsed(), 4000);
  EXPECT_FALSE(splash.isVisible());
}

TEST(SplashPage, NothingEndsItEarlier) {
  CSplashPage splash;
  ShowActive(splash);
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
    QTest::keyClick(&splash, key);
    EXPECT_TRUE(splash.isVisible());
  }
  QTest::keyClick(&splash, Qt::Key_F4, Qt::AltModifier);
  QTest::mouseClick(&splash, Qt::LeftButton);
  QTest::mouseClick(Control<QLabel>(splash, 1165), Qt::LeftButton);
  EXPECT_FALSE(splash.close());
  EXPECT_TRUE(splash.isVisible());
}

TEST(SplashPage, EndsByItselfAfterBeingAskedToClose) {
  CSplashPage splash(nullptr, 100);
  QTimer::singleShot(0, &splash, [&] {
    splash.close();
    splash.reject();
    QTest::keyClick(&splash, Qt::Key_Escape);
    EXPECT_TRUE(splash.isVisible());
  });
  EXPECT_EQ(splash.exec(), 1);
}

TEST(SplashPage, AnotherTimersTickDoesNotEndIt) {
  CSplashPage splash;
  ShowActive(splash);
  QTimerEvent foreign(-1);
  QApplication::sendEvent(&splash, &foreign);
  EXPECT_TRUE(splash.isVisible());
}

TEST(SplashPage, ItsContentsStandInItsMiddle) {
  CSplashPage splash;
  ShowActive(splash);
  QRect filled;
  for (const QLabel* label : splash.findChildren<QLabel*>()) filled |= label->geometry();
  constexpr int kRounding = 2;
  EXPECT_NEAR(filled.left(), splash.rect().right() - filled.right(), kRounding);
  EXPECT_NEAR(filled.top(), splash.rect().bottom() - filled.bottom(), kRounding);
}

TEST(SplashPage, StaysItsTimeEachTime) {
  CSplashPage splash(nullptr, 300);
  EXPECT_EQ(splash.exec(), 1);
  QTest::qWait(150);  // a timer that went on would be half through
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(splash.exec(), 1);
  EXPECT_GE(clock.elapsed(), 250);
}

}  // namespace
}  // namespace quarn::test
