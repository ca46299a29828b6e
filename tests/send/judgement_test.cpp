#include "send/judgement.h"

#include "serial/line_test_support.h"

namespace quarn::send {
namespace {

using std::chrono::milliseconds;
using Moment = Schedule::Clock::time_point;

Verdict JudgedBy(const char* pattern, const QByteArray& response) {
  return Judge({.response = response},
               QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::MultilineOption));
}

TEST(Judge, WithoutAPatternIsTheResultOfTheTransaction) {
  EXPECT_EQ(Judge({}, std::nullopt), Verdict::Received);
  EXPECT_EQ(Judge({.result = TransactionResult::Timeout}, std::nullopt), Verdict::Timeout);
  EXPECT_EQ(Judge({.result = TransactionResult::InvalidData}, std::nullopt), Verdict::Empty);
  EXPECT_EQ(Judge({.result = TransactionResult::Overflow}, std::nullopt), Verdict::Truncated);
  EXPECT_EQ(Judge({.result = TransactionResult::Aborted}, std::nullopt), Verdict::Aborted);
  EXPECT_EQ(Judge({.lineFailed = true}, std::nullopt), Verdict::LineFailed);
  EXPECT_EQ(Judge({.response = "half", .cutOff = true}, std::nullopt), Verdict::LineFailed);
}

TEST(Judge, LooksForThePatternInTheWholeResponse) {
  EXPECT_EQ(JudgedBy("1\\.00$", "SIM-1, firmware 1.00\r"), Verdict::Received);
  EXPECT_EQ(JudgedBy("^b$", "a\rb\rc\r"), Verdict::Received) << "each line has a begin and an end";
  EXPECT_EQ(JudgedBy("<STX>", "\x02"), Verdict::Received) << "as it is printed";
  EXPECT_EQ(JudgedBy("^SIM-2", "SIM-1\r"), Verdict::Unexpected);
}

TEST(Judge, APatternDoesNotMakeUpForNoResponse) {
  const QRegularExpression anything(QStringLiteral(".*"));
  EXPECT_EQ(Judge({.result = TransactionResult::Timeout}, anything), Verdict::Timeout);
  EXPECT_EQ(Judge({.lineFailed = true}, anything), Verdict::LineFailed);
}

TEST(RunStatus, IsTheLastOneUnlessItStopsOnError) {
  RunStatus going(false);
  EXPECT_EQ(going.Status(), 0);
  going.Note(Verdict::Timeout);
  EXPECT_FALSE(going.IsOver());
  going.Note(Verdict::Received);
  EXPECT_EQ(going.Status(), 0);
  RunStatus stopping(true);
  stopping.Note(Verdict::Received);
  EXPECT_FALSE(stopping.IsOver());
  stopping.Note(Verdict::Unexpected);
  EXPECT_TRUE(stopping.IsOver());
  EXPECT_EQ(stopping.Status(), 6);
}

TEST(RunStatus, AnAbortAndAFailedLineEndEveryRun) {
  for (const Verdict verdict : {Verdict::Aborted, Verdict::LineFailed}) {
    RunStatus status(false);
    status.Note(verdict);
    EXPECT_TRUE(status.IsOver());
    EXPECT_FALSE(MayBeRetried(verdict));
  }
}

TEST(Schedule, HasFixedMoments) {
  const Moment first{};
  Schedule schedule(first, milliseconds(100), 0);
  EXPECT_EQ(schedule.Next(first), first);
  EXPECT_EQ(schedule.Next(first + milliseconds(70)), first + milliseconds(100));
  EXPECT_EQ(schedule.Next(first + milliseconds(199)), first + milliseconds(200));
  EXPECT_EQ(schedule.Next(first + milliseconds(300)), first + milliseconds(300)) << "in time to the moment";
}

TEST(Schedule, SkipsWhatItHasMissed) {
  const Moment first{};
  Schedule schedule(first, milliseconds(100), 0);
  EXPECT_EQ(schedule.Next(first), first);
  EXPECT_EQ(schedule.Next(first + milliseconds(350)), first + milliseconds(400));
  EXPECT_EQ(schedule.Next(first + milliseconds(401)), first + milliseconds(500));
}

TEST(Schedule, EndsAfterItsRounds) {
  const Moment first{};
  Schedule schedule(first, milliseconds(0), 2);
  EXPECT_EQ(schedule.Next(first), first);
  EXPECT_EQ(schedule.Next(first + milliseconds(7)), first + milliseconds(7)) << "at once";
  EXPECT_EQ(schedule.Next(first + milliseconds(9)), std::nullopt);
}

}  // namespace
}  // namespace quarn::send
