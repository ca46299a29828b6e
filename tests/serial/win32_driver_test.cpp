#include <gtest/gtest.h>

#include <cstring>

#include "serial/line_test_support.h"
#include "serial/open_port.h"
#include "serial/played_driver_win32.h"
#include "serial/serial_line_win32.h"
#include "support/counted_indicator.h"
#include "support/recorded_messages.h"

namespace quarn {
namespace {

using test::PlayedDriver;

/// A line with a simulated driver, for behaviour that real drivers show rarely.
class Win32Driver : public testing::Test {
 protected:
  void Open() {
    const OpenResult opened = Win32LineOpener().Open(QStringLiteral("COM3"));
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    m_line = opened.line;
    // A read lasts until it is cancelled.
    ASSERT_TRUE(m_line->SetTimeouts({}));
  }
  /// Opens the line and starts a read, which does not end.
  void OpenAndRead(bool heedsCancelling) {
    Open();
    m_driver.Hold(heedsCancelling);
    m_driver.Receive("old");
    m_reading = InThread([this] { return Read(); });
    ASSERT_TRUE(Eventually([this] { return m_driver.Reads() == 1; }));
  }
  /// The outcome of a read: its bytes, or why it failed.
  std::string Read() const {
    std::string bytes(100, '\0');
    const IoResult result = m_line->Read(bytes.data(), bytes.size());
    bytes.resize(result.bytes);
    if (result.ok) return bytes;
    switch (result.failure.kind) {
      case LineError::Cancelled:
        return "cancelled";
      case LineError::Disconnected:
        return "disconnected";
      default:
        return "failed";
    }
  }
  bool Write(const std::string& bytes) const { return m_line->Write(bytes.data(), bytes.size()).ok; }
  [[nodiscard]] static std::string Reason(const LineResult& result) {
    return result.Failure().reason.toStdString();
  }

  PlayedDriver m_driver;
  std::shared_ptr<SerialLine> m_line;
  std::future<std::string> m_reading;
};

TEST_F(Win32Driver, ThePortIsOpenedForThisProgramAlone) {
  Open();
  ASSERT_EQ(m_driver.Openings().size(), 1U);
  const PlayedDriver::Opening opening = m_driver.Openings().front();
  EXPECT_EQ(opening.path, L"COM3");
  EXPECT_EQ(opening.access, DWORD{GENERIC_READ | GENERIC_WRITE});
  EXPECT_EQ(opening.shareMode, 0U) << "nobody else can open it";
  EXPECT_FALSE(opening.hasSecurity);
  EXPECT_EQ(opening.disposition, DWORD{OPEN_EXISTING});
  EXPECT_EQ(opening.flags, DWORD{FILE_ATTRIBUTE_NORMAL}) << "all input and output is synchronous";
  EXPECT_FALSE(opening.hasTemplate);
}

/// A record with every bit of it set or clear.
DCB Filled(int byte) {
  DCB state;
  std::memset(&state, byte, sizeof state);
  state.DCBlength = sizeof state;
  return state;
}

TEST_F(Win32Driver, EverythingButTheFourParametersStaysAsTheDriverHasIt) {
  Open();
  for (const int byte : {0x00, 0xFF, 0xA5, 0x5A}) {
    DCB wanted = Filled(byte);
    m_driver.Have(wanted);
    ASSERT_TRUE(m_line->SetState(
        {.baudRate = 115200, .byteSize = 7, .stopBits = StopBits::Two, .parity = Parity::Even}));
    wanted.BaudRate = 115200;
    wanted.ByteSize = 7;
    wanted.StopBits = TWOSTOPBITS;
    wanted.Parity = EVENPARITY;
    const DCB state = m_driver.State();
    EXPECT_EQ(std::memcmp(&state, &wanted, sizeof state), 0) << "filled with " << byte;
  }
}

TEST_F(Win32Driver, WhatTheDriverDoesNotTellIsNotSet) {
  Open();
  const DCB before = Filled(0xA5);
  m_driver.Have(before);
  m_driver.FailGetState();
  EXPECT_FALSE(m_line->SetState({}));
  const DCB after = m_driver.State();
  EXPECT_EQ(std::memcmp(&after, &before, sizeof after), 0);
}

TEST_F(Win32Driver, OpeningAPortSetsAllFiveTimeouts) {
  test::RecordedMessages messages;
  test::CountedIndicator indicator;
  Win32LineOpener opener;
  PortConnection connection;
  SettingsRecord settings;
  settings.comPort = QStringLiteral("COM3");
  settings.comBps = QStringLiteral("9600");
  settings.portSpeed = QStringLiteral("LOW");
  ASSERT_TRUE(OpenPort(settings, connection, {opener, messages, indicator}));
  const COMMTIMEOUTS timeouts = m_driver.Timeouts();
  EXPECT_EQ(timeouts.ReadIntervalTimeout, 135U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutMultiplier, 15U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, 75U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutMultiplier, 15U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 75U);
}

TEST_F(Win32Driver, EachTimeoutHasItsPlace) {
  Open();
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 1,
                                   .readTotalMultiplier = 2,
                                   .readTotalConstant = 3,
                                   .writeTotalMultiplier = 4,
                                   .writeTotalConstant = 5}));
  const COMMTIMEOUTS timeouts = m_driver.Timeouts();
  EXPECT_EQ(timeouts.ReadIntervalTimeout, 1U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutMultiplier, 2U);
  EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, 3U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutMultiplier, 4U);
  EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 5U);
}

TEST_F(Win32Driver, DtrAndRtsAreLeftToTheDriverUntilSomebodyAsks) {
  Open();
  ASSERT_TRUE(m_line->SetState({.baudRate = 115200}));
  EXPECT_EQ(m_driver.Escapes(), std::vector<DWORD>());
  EXPECT_TRUE(m_line->SetModemLines({.dtr = true}));
  EXPECT_TRUE(m_line->SetModemLines({.rts = false}));
  EXPECT_TRUE(m_line->SetModemLines({.dtr = false, .rts = true}));
  EXPECT_EQ(m_driver.Escapes(), (std::vector<DWORD>{SETDTR, CLRRTS, CLRDTR, SETRTS}));
}

TEST_F(Win32Driver, APurgeDropsWhatIsToBeSentAndWhatHasCome) {
  Open();
  EXPECT_TRUE(m_line->Purge());
  EXPECT_EQ(m_driver.Purges(), std::vector<DWORD>{PURGE_TXCLEAR | PURGE_RXCLEAR});
}

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
}  // namespace quarn
