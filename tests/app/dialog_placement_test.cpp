#include "app/dialog_placement.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

constexpr QSize kScreen{1000, 800};

TEST(DialogPlacement, BelowWhereThereIsRoom) {
  EXPECT_EQ(PlaceBelowOrAbove({30, 20, 400, 150}, {300, 100}, kScreen), QPoint(30, 180));
  // Exactly down to the screen's edge still fits.
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
  EXPECT_EQ(PlaceBelowOnScreen({30, 20, 400, 150}, {300, 100}, kScreen), QPoint(30, 180));
  const QPoint farthest = QPoint(kScreen.width() - 300, kScreen.height() - 100);
  EXPECT_EQ(PlaceBelowOnScreen(QRect(farthest, QSize(400, 150)), {300, 100}, kScreen), farthest);
  EXPECT_EQ(PlaceBelowOnScreen({-50, 20, 400, 150}, {300, 100}, kScreen), QPoint(0, 180));
  EXPECT_EQ(PlaceBelowOnScreen({30, 20, 400, 150}, kScreen + QSize(1, 1), kScreen), QPoint(0, 0));
}

}  // namespace
}  // namespace quarn
