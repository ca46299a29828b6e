#include "serial/read_limits.h"

#include "serial/line_test_support.h"

namespace quarn {
namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t kMaximum = 0xFFFFFFFFU;
/// Some moment; time only moves when a test says so.
const LineClock::time_point kStart{std::chrono::hours(1)};

LineClock::time_point At(std::int64_t ms) { return kStart + milliseconds(ms); }

TEST(ReadLimits, WithoutTimeoutsAReadWaitsForEver) {
  ReadLimits limits({}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), std::nullopt);
  limits.BytesArrived(At(5));
  EXPECT_EQ(limits.Deadline(), std::nullopt);
}

TEST(ReadLimits, TheTotalCountsFromTheCallByRequestedBytes) {
  ReadLimits limits({.readTotalMultiplier = 10, .readTotalConstant = 50}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), At(81960));
  limits.BytesArrived(At(70000));
  EXPECT_EQ(limits.Deadline(), At(81960));
}

TEST(ReadLimits, TheTotalAtLowPortSpeed) {
  const ReadLimits limits({.readTotalMultiplier = 15, .readTotalConstant = 75}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), At(122940));
}

TEST(ReadLimits, EitherHalfOfTheTotalIsEnough) {
  EXPECT_EQ(ReadLimits({.readTotalMultiplier = 3}, 7, kStart).Deadline(), At(21));
  EXPECT_EQ(ReadLimits({.readTotalConstant = 40}, 7, kStart).Deadline(), At(40));
}

TEST(ReadLimits, ATotalBeyondTheEndOfTheClockIsAsGoodAsNever) {
  const ReadLimits limits({.readTotalMultiplier = kMaximum, .readTotalConstant = kMaximum}, 8191, kStart);
  EXPECT_GT(limits.Deadline(), kStart + std::chrono::years(20));
}

TEST(ReadLimits, SilenceCountsOnlyFromTheFirstByte) {
  ReadLimits limits({.readInterval = 90}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), std::nullopt);
  limits.BytesArrived(At(1000));
  EXPECT_EQ(limits.Deadline(), At(1090));
}

TEST(ReadLimits, SilenceCountsFromTheLastByte) {
  ReadLimits limits({90, 10, 50, 10, 50}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), At(81960));
  limits.BytesArrived(At(100));
  EXPECT_EQ(limits.Deadline(), At(190));
  limits.BytesArrived(At(185));
  EXPECT_EQ(limits.Deadline(), At(275));
}

TEST(ReadLimits, TheTotalEndsAReadThatIsNeverSilent) {
  ReadLimits limits({.readInterval = 90, .readTotalConstant = 500}, 8191, kStart);
  limits.BytesArrived(At(450));
  EXPECT_EQ(limits.Deadline(), At(500));
}

TEST(ReadLimits, NoIntervalLeavesTheTotalAlone) {
  ReadLimits limits({.readInterval = 0, .readTotalConstant = 500}, 8191, kStart);
  limits.BytesArrived(At(100));
  EXPECT_EQ(limits.Deadline(), At(500));
}

TEST(ReadLimits, TheLargestIntervalTakesWhatIsThere) {
  ReadLimits limits({.readInterval = kMaximum}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), kStart);
  limits.BytesArrived(At(3));
  EXPECT_EQ(limits.Deadline(), kStart);
}

TEST(ReadLimits, WithTheLargestMultiplierTooTheFirstByteIsWaitedFor) {
  ReadLimits limits({.readInterval = kMaximum, .readTotalMultiplier = kMaximum, .readTotalConstant = 200},
                    8191, kStart);
  EXPECT_EQ(limits.Deadline(), At(200));
  limits.BytesArrived(At(120));
  EXPECT_EQ(limits.Deadline(), At(120));
}

TEST(ReadLimits, TheLargestMultiplierWithoutAConstantWaitsForNothing) {
  const ReadLimits limits({.readInterval = kMaximum, .readTotalMultiplier = kMaximum}, 8191, kStart);
  EXPECT_EQ(limits.Deadline(), kStart);
}

TEST(ReadLimits, WritesHaveATotalOfTheirOwn) {
  EXPECT_EQ(WriteDeadline({.readTotalConstant = 7}, 100, kStart), std::nullopt);
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 10, .writeTotalConstant = 50}, 100, kStart), At(1050));
  EXPECT_EQ(WriteDeadline({.writeTotalConstant = 75}, 100, kStart), At(75));
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 15}, 4, kStart), At(60));
}

}  // namespace
}  // namespace quarn
