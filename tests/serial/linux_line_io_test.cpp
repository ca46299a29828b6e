#include <unistd.h>

#include <array>
#include <numeric>

#include "serial/pty_line_test.h"
#include "serial/retry_on_eintr_linux.h"

namespace quarn {
namespace {

using LinuxLineIo = PtyLineTest;

std::string EveryByte() {
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), '\0');
  return bytes;
}

/// Longer than any delay of the scheduler between bytes that are already received.
constexpr LineTimeouts kPatient{.readInterval = 60'000};

TEST_F(LinuxLineIo, EveryByteComesInUnchanged) {
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  FarSends(EveryByte());
  EXPECT_EQ(Read(256).bytes, EveryByte());
}

TEST_F(LinuxLineIo, EveryByteGoesOutUnchanged) {
  const IoResult written = Write(EveryByte());
  EXPECT_TRUE(written.ok);
  EXPECT_EQ(written.bytes, 256U);
  EXPECT_EQ(FarReceives(256), EveryByte());
}

TEST_F(LinuxLineIo, WhatComesInIsNotEchoed) {
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  FarSends("echo?\r");
  ASSERT_EQ(Read(6).bytes, "echo?\r");
  Write("!");
  EXPECT_EQ(FarReceives(1), "!");
}

/// A process may be stopped until after the end of its read: bytes received meanwhile still count.
TEST(PollLine, LooksOnceHoweverLateItIs) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  std::array<pollfd, 2> polled = {pollfd{ends[0], POLLIN, 0}, pollfd{-1, 0, 0}};
  const auto past = LineClock::now() - std::chrono::hours(1);
  EXPECT_EQ(PollLine(polled, past), 0);
  ASSERT_EQ(::write(ends[1], "x", 1), 1);
  EXPECT_EQ(PollLine(polled, past), 1);
  EXPECT_NE(polled[0].revents & POLLIN, 0);
  for (const int each : ends) ::close(each);
}

TEST_F(LinuxLineIo, AReadEndsWhenTheBufferIsFull) {
  ASSERT_TRUE(m_line->SetTimeouts({}));
  FarSends("0123456789");
  const ReadOutcome first = Read(4);
  EXPECT_TRUE(first.result.ok);
  EXPECT_EQ(first.bytes, "0123");
  EXPECT_EQ(Read(6).bytes, "456789");
}

TEST_F(LinuxLineIo, AReadGathersWhatComesInPieces) {
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto reading = ReadInThread(6);
  FarSends("abc");
  EXPECT_TRUE(StillRuns(reading));
  FarSends("def");
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().bytes, "abcdef");
}

TEST_F(LinuxLineIo, SilenceEndsARead) {
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 30}));
  auto reading = ReadInThread();
  FarSends("one");
  ASSERT_TRUE(Ends(reading));
  const ReadOutcome outcome = reading.get();
  EXPECT_TRUE(outcome.result.ok);
  EXPECT_EQ(outcome.bytes, "one");
  FarSends("two");
  EXPECT_EQ(Read().bytes, "two");
}

TEST_F(LinuxLineIo, SilenceBeforeTheFirstByteEndsNothing) {
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 10}));
  auto reading = ReadInThread();
  EXPECT_TRUE(StillRuns(reading)) << "five times the interval has passed";
  FarSends("late");
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().bytes, "late");
}

TEST_F(LinuxLineIo, TheReadLastsAtLeastTheIntervalBeyondTheLastByte) {
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 120}));
  FarSends("x");
  const std::int64_t taken = MillisecondsOf([this] { EXPECT_EQ(Read().bytes, "x"); });
  EXPECT_GE(taken, 120);
}

/// Sends pieces with a pause between them, and returns how long the longest pause really was.
template <class Send>
std::chrono::milliseconds SendInPieces(int pieces, std::chrono::milliseconds pause, const Send& send) {
  std::chrono::steady_clock::duration longest{};
  auto last = std::chrono::steady_clock::now();
  for (int i = 0; i < pieces; ++i) {
    if (i > 0) std::this_thread::sleep_for(pause);
    send(i);
    const auto now = std::chrono::steady_clock::now();
    if (i > 0) longest = std::max(longest, now - last);
    last = now;
  }
  return std::chrono::ceil<std::chrono::milliseconds>(longest);
}

TEST_F(LinuxLineIo, SilenceIsMeasuredFromTheLastByte) {
  constexpr int kPieces = 6;
  // Together the pauses are longer than the interval; each alone is far shorter.
  std::chrono::milliseconds interval{400};
  for (int attempt = 0;; ++attempt, interval *= 2) {
    ASSERT_LT(attempt, 6) << "the machine is too slow for this test";
    ASSERT_TRUE(m_line->SetTimeouts({.readInterval = static_cast<std::uint32_t>(interval.count())}));
    ASSERT_TRUE(m_line->Purge());
    auto reading = ReadInThread();
    const auto longest = SendInPieces(kPieces, interval / 4, [this](int i) {
      const char piece = static_cast<char>('0' + i);
      FarSends({&piece, 1});
    });
    ASSERT_TRUE(Ends(reading));
    // A pause that the scheduler stretched beyond the interval says nothing about the line.
    if (longest * 2 > interval) continue;
    EXPECT_EQ(reading.get().bytes, "012345");
    return;
  }
}

TEST_F(LinuxLineIo, TheTotalEndsAReadWithoutAByte) {
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 5, .readTotalMultiplier = 10, .readTotalConstant = 30}));
  ReadOutcome outcome;
  const std::int64_t taken = MillisecondsOf([&] { outcome = Read(7); });
  EXPECT_TRUE(outcome.result.ok) << "a time-out is no failure";
  EXPECT_EQ(outcome.result.bytes, 0U);
  EXPECT_GE(taken, 100);
}

TEST_F(LinuxLineIo, TheTotalEndsAReadThatHasBytes) {
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 60}));
  FarSends("partial");
  const ReadOutcome outcome = Read();
  EXPECT_TRUE(outcome.result.ok);
  EXPECT_EQ(outcome.bytes, "partial");
}

TEST_F(LinuxLineIo, TheLargestIntervalTakesWhatIsThereAndNoMore) {
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 0xFFFFFFFFU}));
  const ReadOutcome nothing = Read();
  EXPECT_TRUE(nothing.result.ok);
  EXPECT_EQ(nothing.bytes, "");
  FarSends("there");
  std::string bytes;
  ASSERT_TRUE(Eventually([&] { return (bytes += Read().bytes).size() >= 5; }));
  EXPECT_EQ(bytes, "there");
}

TEST_F(LinuxLineIo, ALargeAnswerComesInWhole) {
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  std::string answer;
  while (answer.size() < kReadSize) answer += "0123456789abcdef";
  answer.resize(kReadSize);
  auto reading = ReadInThread();
  FarSends(answer);
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().bytes, answer);
}

TEST_F(LinuxLineIo, ALargeMessageGoesOutWhole) {
  ASSERT_TRUE(m_line->SetTimeouts({}));
  const std::string message(200'000, 'm');
  auto writing = InThread([&] { return Write(message); });
  EXPECT_EQ(FarReceives(message.size()), message);
  ASSERT_TRUE(Ends(writing));
  EXPECT_EQ(writing.get().bytes, message.size());
}

TEST_F(LinuxLineIo, AWriteToAFullLineEndsAtItsTotal) {
  FillLine();
  ASSERT_TRUE(m_line->SetTimeouts({.writeTotalMultiplier = 10, .writeTotalConstant = 50}));
  IoResult written;
  const std::int64_t taken = MillisecondsOf([&] { written = Write("12345"); });
  EXPECT_TRUE(written.ok) << "a time-out is no failure";
  EXPECT_EQ(written.bytes, 0U);
  EXPECT_GE(taken, 100);
}

TEST_F(LinuxLineIo, AWriteIntoALineThatFillsUpSaysHowMuchWent) {
  ASSERT_TRUE(m_line->SetTimeouts({.writeTotalConstant = 50}));
  const IoResult written = Write(std::string(1'000'000, 'w'));
  EXPECT_TRUE(written.ok);
  EXPECT_GT(written.bytes, 0U);
  EXPECT_LT(written.bytes, 1'000'000U);
  EXPECT_EQ(FarReceives(written.bytes), std::string(written.bytes, 'w'));
}

TEST_F(LinuxLineIo, PurgeDropsWhatHasComeIn) {
  ASSERT_TRUE(m_line->SetTimeouts(kPatient));
  FarSends("old");
  EXPECT_TRUE(m_line->Purge());
  FarSends("new");
  EXPECT_EQ(Read(3).bytes, "new");
}

TEST_F(LinuxLineIo, PurgeWorksWhileAnotherThreadReads) {
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto reading = ReadInThread(1);
  EXPECT_TRUE(StillRuns(reading));
  auto purging = InThread([this] { return m_line->Purge() && m_line->ClearError(); });
  ASSERT_TRUE(Ends(purging));
  EXPECT_TRUE(purging.get());
  FarSends("x");
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get().bytes, "x");
}

}  // namespace
}  // namespace quarn
