#include "app/scaling.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(Scaling, IsRoundedToWholePerCents) {
  EXPECT_EQ(ScalingPercent(96), 100);
  EXPECT_EQ(ScalingPercent(120), 125);
  EXPECT_EQ(ScalingPercent(144), 150);
  EXPECT_EQ(ScalingPercent(168), 175);
  EXPECT_EQ(ScalingPercent(192), 200);
  EXPECT_EQ(ScalingPercent(119), 124);
  EXPECT_EQ(ScalingPercent(0), 0);
}

TEST(Scaling, FourAreSupported) {
  for (int percent = 0; percent <= 500; ++percent) {
    const bool supported = percent == 100 || percent == 125 || percent == 150 || percent == 175;
    EXPECT_EQ(IsSupportedScaling(percent), supported) << percent;
  }
}

}  // namespace
}  // namespace quarn
