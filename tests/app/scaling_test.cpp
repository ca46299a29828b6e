#include "app/scaling.h"

#include <gtest/gtest.h>

#include <cmath>

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

TEST(Scaling, ASubstituteIsSupportedAndTheNextSmallerOneUpTo150) {
  EXPECT_EQ(SubstituteScaling(200), 150);
  EXPECT_EQ(SubstituteScaling(300), 150);
  EXPECT_EQ(SubstituteScaling(174), 150);
  EXPECT_EQ(SubstituteScaling(149), 125);
  EXPECT_EQ(SubstituteScaling(124), 100);
  EXPECT_EQ(SubstituteScaling(99), 100);
  for (int percent = 0; percent <= 500; ++percent) {
    EXPECT_TRUE(IsSupportedScaling(SubstituteScaling(percent))) << percent;
  }
}

TEST(Scaling, ACompositorShowsOutputsAtTheScaleThatIsSet) {
  struct Case {
    OutputSize output;
    int percent;
  };
  // As compositors round: to the next whole pixel, or down.
  for (const Case& each :
       {Case{{{1280, 1024}, {1280, 1024}, 1}, 100}, Case{{{1280, 1024}, {1024, 819}, 2}, 125},
        Case{{{1280, 1024}, {853, 683}, 2}, 150}, Case{{{1280, 1024}, {731, 585}, 2}, 175},
        Case{{{1366, 768}, {780, 438}, 2}, 175}, Case{{{1366, 768}, {781, 439}, 2}, 175},
        Case{{{3840, 2160}, {1920, 1080}, 2}, 200}, Case{{{1367, 769}, {683, 384}, 2}, 200},
        Case{{{3840, 2160}, {1536, 864}, 3}, 250}}) {
    const double drawnDpi = 96.0 * each.output.wholeScale;
    EXPECT_EQ(ScalingPercent(static_cast<int>(std::lround(drawnDpi * ShownShare(each.output)))), each.percent)
        << each.output.logical.width();
  }
}

TEST(Scaling, AnOutputThatIsTurnedHasTheSameOne) {
  EXPECT_NEAR(ShownShare({{2560, 1440}, {960, 1707}, 2}), 0.75, 0.001);
}

TEST(Scaling, AnOutputWithoutSizesIsShownAsDrawn) {
  EXPECT_EQ(ShownShare({}), 1.0);
  EXPECT_EQ(ShownShare({{1280, 1024}, {}, 2}), 1.0);
  EXPECT_EQ(ShownShare({{}, {1280, 1024}, 2}), 1.0);
  EXPECT_EQ(ShownShare({{1280, 1024}, {640, 512}, 0}), 1.0);
}

}  // namespace
}  // namespace quarn
