// What other users of serial lines test of theirs, on the line of this system with the simulated instrument.
// docs/reliability.md lists the cases.

#include <numeric>
#include <optional>

#include "serial/calm_machine.h"
#include "support/process_holdings.h"
#include "support/served_instrument.h"

namespace quarn {
namespace {

using std::chrono::milliseconds;
using test::HoldingsOfThisProcess;
using test::ProcessHoldings;
using test::ServedInstrument;

class LineCases : public testing::Test {
 protected:
  void Serve(std::string_view rules) {
    m_instrument.emplace(rules);
    Open();
  }
  void Open() {
    const OpenResult opened = OpenServedLine(*m_instrument);
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    m_line = opened.line;
  }
  struct ReadOutcome {
    IoResult result;
    std::string bytes;
  };
  [[nodiscard]] ReadOutcome Read(std::size_t size) const {
    std::string bytes(size, '\0');
    const IoResult result = m_line->Read(bytes.data(), size);
    bytes.resize(result.bytes);
    return {result, bytes};
  }
  void Write(std::string_view bytes) const {
    const IoResult written = m_line->Write(bytes.data(), bytes.size());
    ASSERT_TRUE(written.ok) << written.failure.reason.toStdString();
    ASSERT_EQ(written.bytes, bytes.size());
  }

  std::optional<ServedInstrument> m_instrument;
  std::shared_ptr<SerialLine> m_line;
};

TEST_F(LineCases, ATotalOfASecondWithNothingSentIsASuccessWithoutBytes) {
  Serve("");
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 1000}));
  const std::int64_t taken = MillisecondsWhenCalm(milliseconds(200), [this] {
    const std::int64_t whole = MillisecondsOf([this] {
      const ReadOutcome outcome = Read(32);
      EXPECT_TRUE(outcome.result.ok);
      EXPECT_EQ(outcome.result.bytes, 0U);
      EXPECT_EQ(outcome.result.failure.kind, LineError::None);
    });
    EXPECT_GT(whole, 250);
  });
  EXPECT_LT(taken, 2000);
}

TEST_F(LineCases, EighteenOfThirtyTwoBytesComeAtTheEndOfTheTotal) {
  Serve("\"some\" -> \"123456789012345678\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 1000, .writeTotalConstant = 10'000}));
  std::int64_t taken = 0;
  int answers = 0;
  MillisecondsWhenCalm(milliseconds(60), [&] {
    ASSERT_NO_FATAL_FAILURE(Write("some\r"));
    ++answers;
    ASSERT_TRUE(Eventually([&] { return m_instrument->Answers() == answers; }));
    taken = MillisecondsOf([this] {
      const ReadOutcome outcome = Read(32);
      EXPECT_TRUE(outcome.result.ok);
      EXPECT_EQ(outcome.bytes, "123456789012345678");
    });
    EXPECT_GE(taken, 850);
  });
  EXPECT_LE(taken, 1150);
}

TEST_F(LineCases, AByteSizeOf255IsRefusedAndNothingIsPending) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 200, .readTotalConstant = 10'000}));
  LineState before;
  ASSERT_TRUE(m_line->GetState(before));
  LineState wanted = before;
  wanted.byteSize = 255;
  const LineResult set = m_line->SetState(wanted);
  EXPECT_FALSE(set);
  EXPECT_EQ(set.Failure().kind, LineError::Refused);
  EXPECT_TRUE(m_line->ClearError());
  LineState after;
  ASSERT_TRUE(m_line->GetState(after));
  EXPECT_EQ(after, before);
  ASSERT_NO_FATAL_FAILURE(Write("id\r"));
  const ReadOutcome answer = Read(100);
  EXPECT_EQ(answer.bytes, "SIM");
  EXPECT_EQ(answer.result.failure.kind, LineError::None);
}

TEST_F(LineCases, AReadOfTenSecondsThatIsCancelledAfterOneEndsThen) {
  Serve("");
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 10'000}));
  const std::int64_t taken = MillisecondsWhenCalm(milliseconds(200), [this] {
    const std::int64_t whole = MillisecondsOf([this] {
      auto reading = InThread([this] { return Read(32).result; });
      EXPECT_EQ(reading.wait_for(std::chrono::seconds(1)), std::future_status::timeout);
      m_line->CancelIo();
      const IoResult read = reading.get();
      EXPECT_FALSE(read.ok);
      EXPECT_EQ(read.failure.kind, LineError::Cancelled);
    });
    EXPECT_GE(whole, 500);
    m_line->AllowIo();
  });
  EXPECT_LE(taken, 2000);
}

TEST_F(LineCases, AReadThatIsCancelledEndsAlsoIfReadingIsAllowedAgainAtOnce) {
  Serve("");
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto reading = InThread([this] { return Read(32).result; });
  // A thread that had no time to begin reading is not cancelled.
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (reading.wait_for(milliseconds(300)) == std::future_status::ready) break;
    m_line->CancelIo();
    m_line->AllowIo();
  }
  ASSERT_TRUE(Ends(reading)) << "the wake-up was lost";
  EXPECT_EQ(reading.get().failure.kind, LineError::Cancelled);
  ASSERT_NO_FATAL_FAILURE(Write("id\r"));
}

/// Every value of a byte, 16 times.
std::string EveryByteOften() {
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), '\0');
  std::string often;
  for (int i = 0; i < 16; ++i) often += bytes;
  return often;
}

TEST_F(LineCases, EveryByteComesInUnchangedSixteenTimes) {
  std::string rule = "\"all\" -> \"";
  for (int byte = 0; byte < 256; ++byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    rule += "\\x";
    rule += kDigits.at(static_cast<std::size_t>(byte) / 16);
    rule += kDigits.at(static_cast<std::size_t>(byte) % 16);
  }
  Serve(rule + "\" * 16");
  ASSERT_TRUE(m_line->SetState({.baudRate = 115200}));
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 60'000}));
  ASSERT_NO_FATAL_FAILURE(Write("all\r"));
  EXPECT_EQ(Read(EveryByteOften().size()).bytes, EveryByteOften());
}

TEST_F(LineCases, EveryByteGoesOutUnchangedSixteenTimes) {
  Serve("");
  ASSERT_TRUE(m_line->SetState({.baudRate = 115200}));
  ASSERT_TRUE(m_line->SetTimeouts({.writeTotalConstant = 60'000}));
  ASSERT_NO_FATAL_FAILURE(Write(EveryByteOften()));
  EXPECT_TRUE(Eventually([this] { return m_instrument->Received().size() >= EveryByteOften().size(); }));
  EXPECT_EQ(m_instrument->Received(), EveryByteOften());
}

TEST_F(LineCases, AThousandOpeningsLeaveNothingBehind) {
  Serve("");
  const auto use = [this](int times) {
    for (int i = 0; i < times; ++i) {
      m_line.reset();
      ASSERT_NO_FATAL_FAILURE(Open());
      // Takes what is there.
      ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 0xFFFFFFFFU, .writeTotalConstant = 10'000}));
      if (i % 10 == 0) Write("x");
      EXPECT_EQ(Read(1).bytes, "");
      ASSERT_TRUE(m_line->Close());
    }
    m_line.reset();
  };
  // What is made once stays.
  ASSERT_NO_FATAL_FAILURE(use(20));
  ProcessHoldings before = HoldingsOfThisProcess();
  // A thread that has done its work may need a moment to be gone.
  ASSERT_TRUE(Eventually([&] { return std::exchange(before, HoldingsOfThisProcess()) == before; }));
  ASSERT_NO_FATAL_FAILURE(use(1000));
  ProcessHoldings after;
  EXPECT_TRUE(Eventually([&] { return (after = HoldingsOfThisProcess()) == before; }))
      << after.handles << " handles for " << before.handles << ", " << after.threads << " threads for "
      << before.threads;
}

}  // namespace
}  // namespace quarn
