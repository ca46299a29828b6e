#include "ui/placement.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>

#include "support/waits.h"
#include "ui/window_place.h"

namespace quarn {
namespace {

/// Shows the window and waits until its frame is known.
void ShowWithFrame(QWidget& window) {
  window.show();
  ASSERT_TRUE(test::WaitUntil([&] { return IsFrameKnown(window); }));
}

TEST(Placement, CentresALittleAboveTheMiddle) {
  EXPECT_EQ(CentredPosition({1920, 1080}, {400, 200}), QPoint(760, 410));
  EXPECT_EQ(CentredPosition({1921, 1081}, {401, 201}), QPoint(960 - 200, 540 - 100 - 30));
}

TEST(Placement, NeverAboveTheTop) {
  EXPECT_EQ(CentredPosition({640, 480}, {300, 600}), QPoint(170, 0));
  EXPECT_EQ(CentredPosition({640, 480}, {300, 440}).y(), 0);
}

TEST(Placement, ByPercentIsTruncated) {
  EXPECT_EQ(PercentPosition({1920, 1080}, {400, 200}, 98, 3), QPoint(1489, 26));
  EXPECT_EQ(PercentPosition({1920, 1080}, {400, 200}, 3, 3), QPoint(45, 26));
  EXPECT_EQ(PercentPosition({100, 100}, {133, 133}, 50, 50), QPoint(-16, -16));
}

TEST(Placement, MovesAWindowAndKeepsItsSize) {
  QWidget window;
  window.resize(200, 100);
  ShowWithFrame(window);
  CenterOnScreen(window);
  const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
  EXPECT_EQ(window.pos(), CentredPosition(screen, QSize(200, 100).grownBy(FrameOf(window))));
  EXPECT_EQ(window.size(), QSize(200, 100));
  PlaceOnScreenByPercent(window, 98, 3);
  EXPECT_EQ(window.pos(), PercentPosition(screen, QSize(200, 100).grownBy(FrameOf(window)), 98, 3));
}

TEST(Placement, AFrameThatIsNotKnownYetIsThatOfAnotherWindow) {
  const QWidget neverShown;
  EXPECT_FALSE(IsFrameKnown(neverShown));
  QWidget window;
  ShowWithFrame(window);
  const QMargins frame = FrameOf(window);
  EXPECT_EQ(frame, window.windowHandle()->frameMargins());
  EXPECT_EQ(FrameOf(neverShown), frame);
}

TEST(Placement, AFrameThatNobodyReportsIsNoneInTheEnd) {
  QWidget window;
  window.winId();
  if (!window.windowHandle()->frameMargins().isNull()) {
    // On this system frames are known before a window is shown.
    EXPECT_TRUE(IsFrameKnown(window));
    TakeForFrameless(window);
    EXPECT_EQ(FrameOf(window), window.windowHandle()->frameMargins()) << "what is reported counts";
    return;
  }
  EXPECT_FALSE(IsFrameKnown(window));
  TakeForFrameless(window);
  EXPECT_TRUE(IsFrameKnown(window));
  EXPECT_EQ(FrameOf(window), QMargins());
}

TEST(Placement, AWindowThatSomebodyHasMovedIsLeftAlone) {
  QWidget window;
  window.resize(200, 100);
  WindowPlace place(window);
  place.Put([&] { window.move(40, 50); });
  window.show();
  window.move(5, 6);
  QTest::qWait(300);  // it looks for the frame every 10 ms
  EXPECT_EQ(window.pos(), QPoint(5, 6));
}

TEST(Placement, AWindowThatIsPutThereAgainIsNotMovedByItsLayout) {
  // A size set at the showing would count as a move.
  QWidget window;
  auto* column = new QVBoxLayout(&window);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addWidget(new QLabel(QStringLiteral("some text"), &window));
  WindowPlace place(window);
  bool final = true;
  place.Put([&] {
    final = final && window.size() == column->sizeHint();
    window.move(40, 50);
  });
  EXPECT_TRUE(final);
}

TEST(Placement, AWindowThatAsksForNoFrameHasNone) {
  const QWidget bare(nullptr, Qt::Dialog | Qt::FramelessWindowHint);
  EXPECT_EQ(FrameOf(bare), QMargins());
}

TEST(Placement, ADialogIsPlacedEachTimeItAppears) {
  class Dialog : public PlacedDialog {};
  Dialog dialog;
  dialog.resize(200, 100);
  const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
  for (int times = 0; times < 2; ++times) {
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, test::kLongestWaitMs));
    // A window manager may be late, and report an earlier position first.
    const auto isAt = [&dialog](const QPoint& place) {
      return test::WaitUntil([&] { return dialog.pos() == place; });
    };
    EXPECT_TRUE(isAt(CentredPosition(screen, OuterSize(dialog))));
    dialog.move(5, 6);
    QCoreApplication::processEvents();
    EXPECT_TRUE(isAt({5, 6})) << "it may be moved away";
    dialog.hide();
  }
}

TEST(Placement, DialogUnitsGrowWithTheFont) {
  QFont font = QApplication::font();
  const QRect normal = MapDialogUnits(font, {4, 8, 40, 80});
  font.setPointSizeF(font.pointSizeF() * 2);
  const QRect twice = MapDialogUnits(font, {4, 8, 40, 80});
  EXPECT_GT(twice.width(), normal.width() * 3 / 2);
  EXPECT_GT(twice.height(), normal.height() * 3 / 2);
}

/// How often a timer has fired.
class TimerCount : public QObject {
 public:
  explicit TimerCount(QObject& looking) { looking.installEventFilter(this); }
  int count = 0;

 protected:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Timer) ++count;
    return false;
  }
};

TEST(Placement, NobodyLooksForAFrameThatIsThere) {
  QWidget window;
  WindowPlace place(window);
  TimerCount looks(place);
  place.Put([&] { window.move(40, 50); });
  ShowWithFrame(window);
  ASSERT_TRUE(test::WaitUntil([&] { return looks.count > 0; }));
  // Time for twenty ticks.
  const auto rests = [&] {
    const int before = looks.count;
    QTest::qWait(200);
    return looks.count == before;
  };
  EXPECT_TRUE(test::WaitUntil(rests));
  EXPECT_EQ(FrameOf(window), window.windowHandle()->frameMargins());
}

constexpr QSize kScreen{1000, 800};

TEST(DialogPlacement, BelowWhereThereIsRoom) {
  EXPECT_EQ(PlaceBelowOrAbove({30, 20, 400, 150}, {300, 100}, kScreen), QPoint(30, 180));
  // A window that ends exactly at the screen's edge fits.
  EXPECT_EQ(PlaceBelowOrAbove({30, 540, 400, 150}, {300, 100}, kScreen), QPoint(30, 700));
}

TEST(DialogPlacement, AboveWhereThereIsNoRoomBelow) {
  // 541 - 80 + (800 - 691 - 100)
  EXPECT_EQ(PlaceBelowOrAbove({30, 541, 400, 150}, {300, 100}, kScreen), QPoint(30, 470));
}

TEST(DialogPlacement, BesideWhereThereIsRoom) {
  EXPECT_EQ(PlaceBeside({30, 20, 400, 150}, {300, 100}, kScreen), QPoint(440, 20));
  EXPECT_EQ(PlaceBeside({290, 20, 400, 150}, {300, 100}, kScreen), QPoint(700, 20));
}

TEST(DialogPlacement, ToTheLeftWhereThereIsNoRoomBeside) {
  EXPECT_EQ(PlaceBeside({291, 20, 400, 150}, {300, 100}, kScreen), QPoint(270, 20));
}

TEST(DialogPlacement, UnderTheMainDialogAndOnTheScreen) {
  EXPECT_EQ(PlaceOffOthers({30, 20, 400, 150}, {}, {300, 100}, kScreen), QPoint(30, 180));
  EXPECT_EQ(PlaceOffOthers({-50, 20, 400, 150}, {}, {300, 100}, kScreen), QPoint(0, 180));
  EXPECT_EQ(PlaceOffOthers({30, 20, 400, 150}, {}, kScreen + QSize(1, 1), kScreen), QPoint(0, 0));
}

TEST(DialogPlacement, BesideTheMainDialogInTheLastCorner) {
  const QPoint corner(kScreen.width() - 300, kScreen.height() - 100);
  EXPECT_EQ(PlaceOffOthers({corner, QSize(400, 150)}, {}, {300, 100}, kScreen), corner - QPoint(310, 0));
}

TEST(DialogPlacement, OffTheOtherWindows) {
  const QRect mainDialog(30, 20, 400, 150);
  const QRect below(30, 180, 300, 100);
  EXPECT_EQ(PlaceOffOthers(mainDialog, {below}, {300, 100}, kScreen), QPoint(440, 20));
  const QRect beside(440, 20, 300, 100);
  EXPECT_EQ(PlaceOffOthers(mainDialog, {below, beside}, {300, 100}, kScreen), QPoint(30, 290));
}

TEST(DialogPlacement, WhereItCoversLeast) {
  // Only a strip at the bottom is free, and it is too low.
  const QRect most({0, 0}, kScreen - QSize(0, 60));
  EXPECT_EQ(PlaceOffOthers({30, 20, 400, 150}, {most}, {300, 100}, kScreen),
            QPoint(0, kScreen.height() - 100));
}

}  // namespace
}  // namespace quarn
