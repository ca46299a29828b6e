#include "serial/read_deadline.h"

#include "serial/line_test_support.h"

namespace quarn {
namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t kMaximum = 0xFFFFFFFFU;
/// The start time. Only the test moves the time.
const LineClock::time_point kStart{std::chrono::hours(1)};

LineClock::time_point At(std::int64_t ms) { return kStart + milliseconds(ms); }

TEST(ReadDeadline, WithoutTimeoutsAReadWaitsForEver) {
  ReadDeadline deadline({}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), std::nullopt);
  deadline.BytesArrived(At(5));
  EXPECT_EQ(deadline.Time(), std::nullopt);
}

TEST(ReadDeadline, TheTotalCountsFromTheCallByRequestedBytes) {
  ReadDeadline deadline({.readTotalMultiplier = 10, .readTotalConstant = 50}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), At(81960));
  deadline.BytesArrived(At(70000));
  EXPECT_EQ(deadline.Time(), At(81960));
}

TEST(ReadDeadline, TheTotalAtLowPortSpeed) {
  const ReadDeadline deadline({.readTotalMultiplier = 15, .readTotalConstant = 75}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), At(122940));
}

TEST(ReadDeadline, EitherHalfOfTheTotalIsEnough) {
  EXPECT_EQ(ReadDeadline({.readTotalMultiplier = 3}, 7, kStart).Time(), At(21));
  EXPECT_EQ(ReadDeadline({.readTotalConstant = 40}, 7, kStart).Time(), At(40));
}

TEST(ReadDeadline, ATotalBeyondTheEndOfTheClockIsAsGoodAsNever) {
  const ReadDeadline deadline({.readTotalMultiplier = kMaximum, .readTotalConstant = kMaximum}, 8191, kStart);
  EXPECT_GT(deadline.Time(), kStart + std::chrono::years(20));
}

TEST(ReadDeadline, SilenceCountsOnlyFromTheFirstByte) {
  ReadDeadline deadline({.readInterval = 90}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), std::nullopt);
  deadline.BytesArrived(At(1000));
  EXPECT_EQ(deadline.Time(), At(1090));
}

TEST(ReadDeadline, SilenceCountsFromTheLastByte) {
  ReadDeadline deadline({90, 10, 50, 10, 50}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), At(81960));
  deadline.BytesArrived(At(100));
  EXPECT_EQ(deadline.Time(), At(190));
  deadline.BytesArrived(At(185));
  EXPECT_EQ(deadline.Time(), At(275));
}

TEST(ReadDeadline, TheTotalEndsAReadThatIsNeverSilent) {
  ReadDeadline deadline({.readInterval = 90, .readTotalConstant = 500}, 8191, kStart);
  deadline.BytesArrived(At(450));
  EXPECT_EQ(deadline.Time(), At(500));
}

TEST(ReadDeadline, NoIntervalLeavesTheTotalAlone) {
  ReadDeadline deadline({.readInterval = 0, .readTotalConstant = 500}, 8191, kStart);
  deadline.BytesArrived(At(100));
  EXPECT_EQ(deadline.Time(), At(500));
}

TEST(ReadDeadline, TheLargestIntervalTakesWhatIsThere) {
  ReadDeadline deadline({.readInterval = kMaximum}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), kStart);
  deadline.BytesArrived(At(3));
  EXPECT_EQ(deadline.Time(), kStart);
}

TEST(ReadDeadline, WithTheLargestMultiplierTooTheFirstByteIsWaitedFor) {
  ReadDeadline deadline({.readInterval = kMaximum, .readTotalMultiplier = kMaximum, .readTotalConstant = 200},
                        8191, kStart);
  EXPECT_EQ(deadline.Time(), At(200));
  deadline.BytesArrived(At(120));
  EXPECT_EQ(deadline.Time(), At(120));
}

TEST(ReadDeadline, TheLargestMultiplierWithoutAConstantWaitsForNothing) {
  const ReadDeadline deadline({.readInterval = kMaximum, .readTotalMultiplier = kMaximum}, 8191, kStart);
  EXPECT_EQ(deadline.Time(), kStart);
}

TEST(ReadDeadline, WritesHaveATotalOfTheirOwn) {
  EXPECT_EQ(WriteDeadline({.readTotalConstant = 7}, 100, kStart), std::nullopt);
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 10, .writeTotalConstant = 50}, 100, kStart), At(1050));
  EXPECT_EQ(WriteDeadline({.writeTotalConstant = 75}, 100, kStart), At(75));
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 15}, 4, kStart), At(60));
}

}  // namespace
}  // namespace quarn
