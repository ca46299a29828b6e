#include <cstring>

#include "serial/line_parameters.h"
#include "support/scripted_line.h"
#include "terminal/receive_worker.h"
#include "terminal/transaction.h"
#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

using Steps = std::vector<std::string>;

/// Transactions over a scripted line, for behaviour that a real line shows rarely.
class TransactionFailure : public TransactionTest {
 protected:
  TransactionFailure() { m_connection.handle = PortHandle(m_line); }

  void ReadGives(const std::string& bytes) {
    m_line->read = [bytes](char* buffer, std::size_t size) {
      const std::size_t count = std::min(size, bytes.size());
      std::memcpy(buffer, bytes.data(), count);
      return IoResult{.ok = true, .bytes = count};
    };
  }
  void ReadFails() {
    m_line->read = [](char*, std::size_t) { return IoResult{}; };
  }

  Journal m_journal;
  std::shared_ptr<ScriptedLine> m_line = std::make_shared<ScriptedLine>(m_journal);
};

TEST_F(TransactionFailure, PurgesSendsClearsTheErrorAndReadsOnce) {
  ReadGives("SIM\r");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(m_journal.Entries(), (Steps{"purge", "write", "clear error", "read"}));
  EXPECT_EQ(m_line->written, "id\r");
  EXPECT_EQ(m_line->readSize, 8191U);
}

/// The instrument gets a pause before the next command, however soon that is sent.
TEST_F(TransactionFailure, FiftyMillisecondsLieBetweenAResponseAndTheEndOfItsTransaction) {
  using Clock = std::chrono::steady_clock;
  Clock::time_point read;
  m_line->read = [&read](char* buffer, std::size_t) {
    *buffer = 'A';
    read = Clock::now();
    return IoResult{.ok = true, .bytes = 1};
  };
  ASSERT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_GE(Clock::now() - read, std::chrono::milliseconds(50));
  EXPECT_FALSE(m_engine->IsBusy());
}

/// Like a stop of the process during the wait: for some time there are no polls. Then the read needs some
/// more time.
TEST_F(TransactionFailure, PollsThatCouldNotBeMadeDoNotCount) {
  SetShortestTimeout();
  std::promise<void> goesOn;
  const std::function<void()> stop = [&] {
    // The time-out would come next.
    if (m_host.looks < 2) {
      m_host.whilePainting = stop;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    goesOn.set_value();
  };
  m_host.whilePainting = stop;
  m_line->read = [&goesOn](char* buffer, std::size_t) {
    goesOn.get_future().wait();
    // Its response then settles for 50 ms, and a hundred are left: a busy computer needs the rest.
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    *buffer = 'A';
    return IoResult{.ok = true, .bytes = 1};
  };
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "A");
}

TEST_F(TransactionFailure, AFailedPurgeIsPassedOver) {
  m_line->purgeWorks = false;
  ReadGives("SIM\r");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(m_line->written, "id\r");
}

TEST_F(TransactionFailure, AFailedTransmissionIsNotReportedByItself) {
  m_line->write = [](const char*, std::size_t) { return IoResult{}; };
  ReadGives("SIM\r");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
}

TEST_F(TransactionFailure, TheTotalOfTheReadIsWhatEndsAWaitWithoutALimit) {
  const auto totalOf = [](const char* portSpeed) {
    const LineTimeouts timeouts = TimeoutsOf(QStringLiteral("9600"), QString::fromLatin1(portSpeed));
    return timeouts.readTotalMultiplier * 8191U + timeouts.readTotalConstant;
  };
  EXPECT_EQ(totalOf("HIGH"), 81'960U);
  EXPECT_EQ(totalOf("LOW"), 122'940U);
}

TEST_F(TransactionFailure, AReadThatReachedItsTotalIsInvalidData) {
  ReadGives("");
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
  EXPECT_FALSE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.byteCount, -1);
  EXPECT_EQ(Response(), "");
}

TEST_F(TransactionFailure, AnEmptyReadForgetsTheResponseBefore) {
  ReadGives("former\r");
  ASSERT_EQ(Run("id"), TransactionResult::Received);
  ReadGives("");
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
}

TEST_F(TransactionFailure, AFailedReadLeavesTheFormerBufferInPlay) {
  ReadGives("former\r");
  ASSERT_EQ(Run("one"), TransactionResult::Received);
  ReadFails();
  EXPECT_EQ(Run("two"), TransactionResult::Received);
  EXPECT_EQ(Response(), "former\r");
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
}

TEST_F(TransactionFailure, AFailedFirstReadIsInvalidData) {
  ReadFails();
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
}

TEST_F(TransactionFailure, AFailedReadAfterAnOverflowIsNoOverflow) {
  ReadGives(std::string(1500, 'x'));
  ASSERT_EQ(Run("one"), TransactionResult::Overflow);
  ReadFails();
  EXPECT_EQ(Run("two"), TransactionResult::Received);
  EXPECT_EQ(Response(), QByteArray(1024, 'x'));
}

TEST_F(TransactionFailure, WithoutAPortTheReadFails) {
  for (const PortHandle& handle : {PortHandle(), PortHandle::Invalid()}) {
    m_connection.handle = handle;
    EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
    EXPECT_TRUE(m_outcome.lineFailed);
    EXPECT_EQ(m_outcome.raw, "");
    EXPECT_EQ(m_outcome.byteCount, -1);
  }
  EXPECT_EQ(m_journal.Entries(), Steps{});
}

TEST_F(TransactionFailure, AnAnswerOfAnotherLineIsNeverShown) {
  ReadGives("former\r");
  ASSERT_EQ(Run("one"), TransactionResult::Received);
  const PortHandle former = m_connection.handle;
  m_connection.handle = PortHandle();
  EXPECT_EQ(Run("two"), TransactionResult::InvalidData);
  m_connection.handle = former;
  ASSERT_EQ(Run("three"), TransactionResult::Received);
  Journal elsewhere;
  const auto next = std::make_shared<ScriptedLine>(elsewhere);
  next->read = [](char*, std::size_t) { return IoResult{}; };
  m_connection.handle = PortHandle(next);
  EXPECT_EQ(Run("four"), TransactionResult::InvalidData);
}

/// The kept bytes are those of the line's last successful read, even if nobody waited for it.
TEST_F(TransactionFailure, WhatAReadLeftBehindStillBroughtIsTheFormerBuffer) {
  std::promise<void> cancelled;
  int reads = 0;
  m_line->read = [&](char* buffer, std::size_t) {
    // Only the first one succeeds. The next begins when this one has ended.
    if (reads++ > 0) return IoResult{};
    cancelled.get_future().wait();
    std::memcpy(buffer, "late\r", 5);
    return IoResult{.ok = true, .bytes = 5};
  };
  m_line->cancel = [&] { cancelled.set_value(); };
  m_host.escapeAtLook = 1;
  ASSERT_EQ(Run("one"), TransactionResult::Aborted);
  EXPECT_EQ(Response(), "");
  EXPECT_EQ(Run("two"), TransactionResult::Received);
  EXPECT_EQ(Response(), "late\r");
  EXPECT_TRUE(m_outcome.lineFailed);
  EXPECT_EQ(m_outcome.raw, "");
}

TEST_F(TransactionFailure, AnOutcomeWithoutAReadHoldsNothingOfTheOneBefore) {
  ReadGives("former\r");
  ASSERT_EQ(Run("one"), TransactionResult::Received);
  std::promise<void> cancelled;
  m_line->read = [&](char*, std::size_t) {
    cancelled.get_future().wait();
    return IoResult{};
  };
  m_line->cancel = [&] { cancelled.set_value(); };
  m_host.escapeAtLook = 1;
  EXPECT_EQ(Run("two"), TransactionResult::Aborted);
  EXPECT_EQ(Response(), "");
  EXPECT_EQ(m_outcome.raw, "");
  EXPECT_EQ(m_outcome.byteCount, -1);
  EXPECT_FALSE(m_outcome.lineFailed);
  m_engine.reset();
}

TEST(ReadingOf, IsCutAtTheLimitOnlyTwoBytesBeyondIt) {
  const QByteArray bytes(8191, 'x');
  for (const auto& [comBuf, limit] : {std::pair{"1K", 1024}, {"6K", 6144}}) {
    for (const int beyond : {-1, 0, 1, 2, 3}) {
      const int count = limit + beyond;
      const Reading reading =
          ReadingOf(bytes.constData(), static_cast<std::size_t>(count), QString::fromLatin1(comBuf));
      EXPECT_EQ(reading.truncated, beyond > 1) << count;
      EXPECT_EQ(reading.bytes.size(), beyond > 1 ? limit : count) << count;
      EXPECT_EQ(reading.byteCount, count - 1);
      EXPECT_FALSE(reading.failed);
    }
  }
}

TEST_F(TransactionFailure, AWorkerWhoseWaitEndedWhileItSentDoesNotReadAnyMore) {
  std::promise<void> sent;
  m_line->write = [&](const char*, std::size_t size) {
    sent.get_future().wait();
    return IoResult{.ok = true, .bytes = size};
  };
  m_host.escapeAtLook = 1;
  EXPECT_EQ(Run("id"), TransactionResult::Aborted);
  sent.set_value();
  m_engine.reset();
  for (const std::string& step : m_journal.Entries()) EXPECT_NE(step, "read");
}

TEST_F(TransactionFailure, ALeftBehindReadIsGoneBeforeTheNextCommandGoesOut) {
  std::promise<void> cancelled;
  int reads = 0;
  m_line->read = [&](char* buffer, std::size_t) {
    if (++reads > 1) {
      std::memcpy(buffer, "SIM\r", 4);
      return IoResult{.ok = true, .bytes = 4};
    }
    cancelled.get_future().wait();
    return IoResult{};
  };
  m_line->cancel = [&] { cancelled.set_value(); };
  m_host.escapeAtLook = 1;
  ASSERT_EQ(Run("one"), TransactionResult::Aborted);
  EXPECT_EQ(Run("two"), TransactionResult::Received);
  EXPECT_EQ(m_journal.Entries(), (Steps{"purge", "write", "clear error", "read", "cancel", "allow", "purge",
                                        "write", "clear error", "read"}));
  EXPECT_EQ(m_line->written, "one\rtwo\r");
}

}  // namespace
}  // namespace quarn
