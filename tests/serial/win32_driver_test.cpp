// Reads and writes, drivers that do not end them, and lost devices.

#include "serial/win32_driver_fixture.h"

namespace quarn::test {
namespace {

TEST_F(Win32Driver, NothingIsReadBeforeSomethingHasCome) {
  Open();
  m_driver.Hold(false);
  auto reading = InThread([this] { return Read(); });
  EXPECT_TRUE(StillRuns(reading));
  EXPECT_EQ(m_driver.Reads(), 0) << "a read on a silent line lasts as long as the driver likes";
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get(), "cancelled");
  m_line->AllowIo();
  EXPECT_TRUE(m_line->Purge()) << "nothing was left behind";
}

TEST_F(Win32Driver, WhatComesIsReadInOneCall) {
  Open();
  auto reading = InThread([this] { return Read(); });
  EXPECT_TRUE(StillRuns(reading));
  m_driver.Receive("SIM-1\r");
  ASSERT_TRUE(Ends(reading));
  EXPECT_EQ(reading.get(), "SIM-1\r");
  EXPECT_EQ(m_driver.Reads(), 1);
}

/// In milliseconds; for reads of 100 bytes.
constexpr LineTimeouts kMinutes{.readInterval = 20,
                                .readTotalMultiplier = 1000,
                                .readTotalConstant = 50'000,
                                .writeTotalMultiplier = 3,
                                .writeTotalConstant = 4};
constexpr std::uint32_t kTotal = 150'000;

TEST_F(Win32Driver, TheTotalOfAReadCountsFromItsCall) {
  Open();
  ASSERT_TRUE(m_line->SetTimeouts(kMinutes));
  const std::int64_t whole = MillisecondsOf([this] {
    auto reading = InThread([this] { return Read(); });
    ASSERT_TRUE(Eventually([this] { return m_driver.Looks() > 0; }));
    // The first byte comes after a moment.
    EXPECT_TRUE(StillRuns(reading));
    m_driver.Receive("late");
    ASSERT_TRUE(Ends(reading));
    EXPECT_EQ(reading.get(), "late");
  });
  ASSERT_EQ(m_driver.Reads(), 1);
  const COMMTIMEOUTS used = m_driver.TimeoutsOfReads().front();
  EXPECT_EQ(used.ReadTotalTimeoutMultiplier, 0U);
  EXPECT_LE(used.ReadTotalTimeoutConstant, kTotal - 49) << "that moment belongs to the total";
  EXPECT_GE(used.ReadTotalTimeoutConstant, kTotal - whole - 1);
  EXPECT_EQ(used.ReadIntervalTimeout, 20U) << "it counts from the first byte anyway";
  EXPECT_EQ(used.WriteTotalTimeoutMultiplier, 3U);
  EXPECT_EQ(used.WriteTotalTimeoutConstant, 4U);
  const COMMTIMEOUTS afterwards = m_driver.Timeouts();
  EXPECT_EQ(afterwards.ReadIntervalTimeout, 20U);
  EXPECT_EQ(afterwards.ReadTotalTimeoutMultiplier, 1000U);
  EXPECT_EQ(afterwards.ReadTotalTimeoutConstant, 50'000U);
}

TEST_F(Win32Driver, EachReadHasItsOwnTotal) {
  // For a read without a wait before it this is also the rest.
  constexpr LineTimeouts kOwnTotal{.readInterval = 20, .readTotalConstant = kTotal};
  Open();
  ASSERT_TRUE(m_line->SetTimeouts(kOwnTotal));
  // One that is left behind with the rest of its total.
  m_driver.Hold(false);
  auto reading = InThread([this] { return Read(); });
  ASSERT_TRUE(Eventually([this] { return m_driver.Looks() > 0; }));
  EXPECT_TRUE(StillRuns(reading));
  m_driver.Receive("old");
  ASSERT_TRUE(Eventually([this] { return m_driver.Reads() == 1; }));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading));
  m_line->AllowIo();
  EXPECT_LE(m_driver.Timeouts().ReadTotalTimeoutConstant, kTotal - 49);
  m_driver.Release();
  ASSERT_TRUE(m_line->Purge());
  m_driver.Receive("new");
  std::string got;
  const std::int64_t whole = MillisecondsOf([&] { got = Read(); });
  EXPECT_EQ(got, "new");
  ASSERT_EQ(m_driver.Reads(), 2);
  EXPECT_GE(m_driver.TimeoutsOfReads().back().ReadTotalTimeoutConstant, kTotal - whole - 1);
  EXPECT_EQ(m_driver.Timeouts().ReadTotalTimeoutConstant, kOwnTotal.readTotalConstant);
}

TEST_F(Win32Driver, ADriverThatTakesNoRestReadsAllTheSame) {
  Open();
  ASSERT_TRUE(m_line->SetTimeouts(kMinutes));
  m_driver.FailSetTimeouts();
  m_driver.Receive("answer");
  EXPECT_EQ(Read(), "answer");
  EXPECT_FALSE(m_line->IsLost());
}

TEST_F(Win32Driver, ADriverThatHeedsACancellationIsFreeAtOnce) {
  OpenAndRead(true);
  m_line->CancelIo();
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_EQ(m_reading.get(), "cancelled");
  m_line->AllowIo();
  EXPECT_TRUE(m_line->Purge());
}

TEST_F(Win32Driver, ACancelledReadLeavesTheFailureOfAnotherCallAlone) {
  OpenAndRead(true);
  m_driver.FailGetState();
  const LineResult set = m_line->SetState({});
  m_line->CancelIo();
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_EQ(m_reading.get(), "cancelled");
  EXPECT_FALSE(set);
  EXPECT_EQ(set.Failure().kind, LineError::Refused);
}

TEST_F(Win32Driver, OneThatDoesNotHoldsNobodyUp) {
  OpenAndRead(false);
  auto cancelling = InThread([this] { m_line->CancelIo(); });
  ASSERT_TRUE(Ends(cancelling));
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_EQ(m_reading.get(), "cancelled");
}

TEST_F(Win32Driver, WhatIsLeftBehindTakesNoAnswerOfAnotherCommand) {
  OpenAndRead(false);
  m_line->CancelIo();
  ASSERT_TRUE(Ends(m_reading));
  m_line->AllowIo();
  // Nothing is sent while the earlier read could take the response.
  LineState state;
  EXPECT_FALSE(Write("id\r"));
  EXPECT_EQ(m_driver.Sent(), "");
  EXPECT_EQ(Read(), "failed");
  for (const LineResult& result :
       {m_line->ClearError(), m_line->GetState(state), m_line->SetState(state), m_line->SetTimeouts({})}) {
    EXPECT_FALSE(result);
    EXPECT_EQ(Reason(result), "COM3: the driver has not ended an earlier read or write");
  }
  EXPECT_EQ(m_driver.Reads(), 1);

  auto purging = InThread([this] { return m_line->Purge(); });
  EXPECT_TRUE(StillRuns(purging)) << "a command waits for it";
  m_driver.Release();
  ASSERT_TRUE(Ends(purging));
  EXPECT_TRUE(purging.get());
  EXPECT_TRUE(Write("id\r"));
  EXPECT_EQ(m_driver.Sent(), "id\r");
  m_driver.Receive("new");
  EXPECT_EQ(Read(), "new") << "what the earlier read took is dropped";
}

TEST_F(Win32Driver, ACommandThatWaitsForItCanBeCancelled) {
  OpenAndRead(false);
  m_line->CancelIo();
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_FALSE(m_line->Purge()) << "whoever has cancelled does not wait";
  m_line->AllowIo();
  auto purging = InThread([this] { return m_line->Purge(); });
  EXPECT_TRUE(StillRuns(purging));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(purging));
  EXPECT_FALSE(purging.get());
  EXPECT_TRUE(m_driver.Purges().empty());
}

TEST_F(Win32Driver, AWriteIsLeftBehindInTheSameWay) {
  Open();
  m_driver.Hold(false);
  auto writing = InThread([this] { return Write("stuck"); });
  EXPECT_TRUE(StillRuns(writing));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(writing));
  EXPECT_FALSE(writing.get());
  m_line->AllowIo();
  EXPECT_FALSE(Write("id\r"));
  m_driver.Release();
  EXPECT_TRUE(Eventually([this] { return Write("id\r"); }));
  EXPECT_EQ(m_driver.Sent(), "stuckid\r");
}

TEST_F(Win32Driver, WhatIsLeftBehindClosesThePortAtItsEnd) {
  OpenAndRead(false);
  auto closing = InThread([this] { return m_line->Close(); });
  ASSERT_TRUE(Ends(closing));
  const LineResult closed = closing.get();
  EXPECT_FALSE(closed) << "the system has not closed it";
  EXPECT_EQ(Reason(closed), "COM3: the driver has not ended an earlier read or write");
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_EQ(m_reading.get(), "disconnected");
  const LineResult purged = m_line->Purge();
  EXPECT_FALSE(purged);
  EXPECT_EQ(purged.Failure().kind, LineError::Disconnected);
  m_line.reset();
  EXPECT_TRUE(m_driver.IsOpen()) << "nothing is closed under a reader";
  m_driver.Release();
  EXPECT_TRUE(Eventually([this] { return !m_driver.IsOpen(); }));
}

TEST_F(Win32Driver, ALineWithNothingLeftBehindIsClosedAtOnce) {
  Open();
  EXPECT_TRUE(m_line->Close());
  EXPECT_FALSE(m_driver.IsOpen());
}

TEST_F(Win32Driver, ADriverThatDoesNotCloseIsLeftToItself) {
  Open();
  m_driver.HoldClose();
  auto closing = InThread([this] { return m_line->Close(); });
  ASSERT_TRUE(Ends(closing));
  const LineResult closed = closing.get();
  EXPECT_FALSE(closed);
  EXPECT_EQ(Reason(closed), "COM3: the driver has not closed it yet");
  EXPECT_EQ(m_line->Purge().Failure().kind, LineError::Disconnected);
  EXPECT_TRUE(m_driver.IsOpen());
  m_driver.Release();
  EXPECT_TRUE(Eventually([this] { return !m_driver.IsOpen(); }));
}

TEST_F(Win32Driver, ADeviceThatIsGoneEndsAReadThatWaits) {
  for (const DWORD error :
       {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_BAD_COMMAND}, DWORD{ERROR_FILE_NOT_FOUND}}) {
    m_driver.FailWith(ERROR_SUCCESS);
    Open();
    auto reading = InThread([this] { return Read(); });
    EXPECT_TRUE(StillRuns(reading));
    m_driver.FailWith(error);
    ASSERT_TRUE(Ends(reading));
    EXPECT_EQ(reading.get(), "disconnected") << error;
    EXPECT_TRUE(m_line->IsLost()) << error;
  }
}

TEST_F(Win32Driver, AMessageComesBeforeTheLossThreeTimes) {
  for (int round = 0; round < 3; ++round) {
    m_driver.FailWith(ERROR_SUCCESS);
    Open();
    m_driver.Receive("message");
    EXPECT_EQ(Read(), "message");
    EXPECT_FALSE(m_line->IsLost());
    auto reading = InThread([this] { return Read(); });
    EXPECT_TRUE(StillRuns(reading));
    m_driver.FailWith(ERROR_BAD_COMMAND);
    ASSERT_TRUE(Ends(reading));
    EXPECT_EQ(reading.get(), "disconnected");
    EXPECT_EQ(Read(), "disconnected");
    EXPECT_TRUE(m_line->IsLost());
    m_line->Close();
  }
}

TEST_F(Win32Driver, BytesBeforeTheErrorOfTheirReadAreTheAnswer) {
  for (int round = 0; round < 3; ++round) {
    m_driver.FailWith(ERROR_SUCCESS);
    Open();
    m_driver.Hold(true);
    m_driver.Receive("message");
    auto reading = InThread([this] { return Read(); });
    ASSERT_TRUE(Eventually([this, round] { return m_driver.Reads() == round + 1; }));
    m_driver.FailWith(ERROR_BAD_COMMAND);
    m_driver.Release();
    ASSERT_TRUE(Ends(reading));
    EXPECT_EQ(reading.get(), "message");
    EXPECT_EQ(Read(), "disconnected");
    EXPECT_TRUE(m_line->IsLost());
    m_line->Close();
  }
}

TEST_F(Win32Driver, ALineWhoseDeviceIsGoneIsLostForGood) {
  Open();
  EXPECT_FALSE(m_line->IsLost());
  m_driver.FailWith(ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(m_line->IsLost()) << "a driver may refuse";
  m_driver.FailWith(ERROR_GEN_FAILURE);
  EXPECT_TRUE(m_line->IsLost());
  m_driver.FailWith(ERROR_SUCCESS);
  EXPECT_TRUE(m_line->IsLost()) << "another device has its name now";
  m_line->Close();
  EXPECT_FALSE(m_line->IsLost()) << "nobody has it any more";
}

TEST_F(Win32Driver, WhetherItIsLostIsAskedWithoutWaiting) {
  OpenAndRead(false);
  EXPECT_FALSE(m_line->IsLost());
  m_line->CancelIo();
  ASSERT_TRUE(Ends(m_reading));
  EXPECT_FALSE(m_line->IsLost()) << "a read that was left behind is not waited for";
}

}  // namespace
}  // namespace quarn::test
