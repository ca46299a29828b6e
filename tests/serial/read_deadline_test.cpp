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

TEST(ReadDeadline, TheRestOfATotalIsWhatTheWaitForTheFirstByteHasLeft) {
  const LineTimeouts asked{.readInterval = 90,
                           .readTotalMultiplier = 10,
                           .readTotalConstant = 50,
                           .writeTotalMultiplier = 10,
                           .writeTotalConstant = 50};
  const auto end = ReadDeadline(asked, 8191, kStart).Time();
  const auto restAfter = [&](LineClock::duration waited) {
    LineTimeouts expected = asked;
    expected.readTotalMultiplier = 0;
    const LineTimeouts rest = RestOf(asked, end, kStart + waited);
    expected.readTotalConstant = rest.readTotalConstant;
    EXPECT_EQ(rest, expected) << "interval and writes are left alone";
    return rest.readTotalConstant;
  };
  EXPECT_EQ(restAfter(milliseconds(0)), 81'960U);
  EXPECT_EQ(restAfter(milliseconds(81'000)), 960U);
  EXPECT_EQ(restAfter(std::chrono::microseconds(81'000'001)), 960U);
  EXPECT_EQ(restAfter(milliseconds(81'959)), 1U);
  // 0 would be a read without an end.
  EXPECT_EQ(restAfter(milliseconds(81'960)), 1U);
  EXPECT_EQ(restAfter(milliseconds(100'000)), 1U);
}

TEST(ReadDeadline, ATotalThatIsNoneOrMeansSomethingElseIsLeftAlone) {
  const LineTimeouts forEver{.readInterval = 90, .writeTotalConstant = 50};
  EXPECT_EQ(RestOf(forEver, ReadDeadline(forEver, 100, kStart).Time(), At(10)), forEver);
  const LineTimeouts firstByte{
      .readInterval = kMaximum, .readTotalMultiplier = kMaximum, .readTotalConstant = 200};
  EXPECT_EQ(RestOf(firstByte, ReadDeadline(firstByte, 100, kStart).Time(), At(10)), firstByte);
  const LineTimeouts years{.readTotalMultiplier = kMaximum - 1, .readTotalConstant = 50};
  EXPECT_EQ(RestOf(years, ReadDeadline(years, 100, kStart).Time(), At(10)).readTotalConstant, kMaximum - 1);
}

TEST(ReadDeadline, WritesHaveATotalOfTheirOwn) {
  EXPECT_EQ(WriteDeadline({.readTotalConstant = 7}, 100, kStart), std::nullopt);
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 10, .writeTotalConstant = 50}, 100, kStart), At(1050));
  EXPECT_EQ(WriteDeadline({.writeTotalConstant = 75}, 100, kStart), At(75));
  EXPECT_EQ(WriteDeadline({.writeTotalMultiplier = 15}, 4, kStart), At(60));
}

}  // namespace
}  // namespace quarn
