#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <memory>
#include <optional>

#include "serial/line_failure_win32.h"
#include "serial/line_test_support.h"
#include "serial/serial_line_win32.h"
#include "support/served_instrument.h"

namespace quarn {
namespace {

using test::ServedInstrument;

/// A COM port with an instrument.
class Win32Line : public testing::Test {
 protected:
  void Serve(std::string_view rules) {
    m_instrument.emplace(rules);
    const OpenResult opened = OpenServedLine(*m_instrument);
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    m_line = opened.line;
  }
  IoResult Write(const std::string& bytes) const { return m_line->Write(bytes.data(), bytes.size()); }
  struct ReadOutcome {
    IoResult result;
    std::string bytes;
  };
  ReadOutcome Read(std::size_t size = 8191) const {
    std::string bytes(size, '\0');
    const IoResult result = m_line->Read(bytes.data(), size);
    bytes.resize(result.bytes);
    return {result, bytes};
  }

  std::optional<ServedInstrument> m_instrument;
  std::shared_ptr<SerialLine> m_line;
};

TEST_F(Win32Line, APortThatIsNotThereIsNotFound) {
  for (const char* path : {"COM9", "\\\\.\\COM77"}) {
    const OpenResult opened = Win32LineOpener().Open(QLatin1String(path));
    EXPECT_FALSE(opened.line);
    EXPECT_EQ(opened.failure.kind, LineError::NotFound);
    EXPECT_TRUE(opened.failure.reason.startsWith(QLatin1String(path))) << opened.failure.reason.toStdString();
    EXPECT_GT(opened.failure.reason.size(), 12) << "the system's words";
  }
}

TEST_F(Win32Line, ATwoDigitPortOpensUnderItsLongName) {
  const test::LineRequest port(QStringLiteral("COM12"), QByteArray());
  EXPECT_TRUE(Win32LineOpener().Open(QStringLiteral("\\\\.\\COM12")).line);
}

TEST_F(Win32Line, TheFourParametersAreSetAndRead) {
  Serve("");
  for (const LineState& wanted :
       {LineState{.baudRate = 115200, .byteSize = 7, .stopBits = StopBits::Two, .parity = Parity::Even},
        LineState{.baudRate = 1200, .byteSize = 8, .stopBits = StopBits::One, .parity = Parity::Odd},
        LineState{}}) {
    const LineResult set = m_line->SetState(wanted);
    ASSERT_TRUE(set) << set.Failure().reason.toStdString();
    LineState state{.baudRate = 1};
    ASSERT_TRUE(m_line->GetState(state));
    EXPECT_EQ(state.baudRate, wanted.baudRate);
    EXPECT_EQ(state.stopBits, wanted.stopBits);
  }
}

/// Opens the port again, beside the line. Only Wine allows that.
class BareHandle {
 public:
  explicit BareHandle(const QString& port)
      : m_handle(CreateFileW(port.toStdWString().c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(m_handle, INVALID_HANDLE_VALUE);
  }
  ~BareHandle() { CloseHandle(m_handle); }
  BareHandle(const BareHandle&) = delete;
  BareHandle& operator=(const BareHandle&) = delete;
  [[nodiscard]] DCB State() const {
    DCB state{};
    state.DCBlength = sizeof state;
    EXPECT_NE(GetCommState(m_handle, &state), FALSE);
    return state;
  }
  void SetState(DCB state) const { EXPECT_NE(SetCommState(m_handle, &state), FALSE); }

 private:
  const HANDLE m_handle;
};

TEST_F(Win32Line, EverythingElseOfTheStateStaysAsItWas) {
  Serve("");
  const BareHandle port(m_instrument->NodePath());
  for (const bool handshake : {true, false}) {
    DCB before = port.State();
    before.fOutX = before.fInX = handshake ? TRUE : FALSE;
    before.fRtsControl = handshake ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
    before.fOutxCtsFlow = handshake ? TRUE : FALSE;
    before.XonChar = handshake ? 0x11 : 0x12;
    before.XoffChar = handshake ? 0x13 : 0x14;
    port.SetState(before);
    DCB wanted = port.State();
    EXPECT_EQ(wanted.fOutX, before.fOutX) << "the system keeps it";
    ASSERT_TRUE(m_line->SetState({.baudRate = 115200, .stopBits = StopBits::Two}));
    wanted.BaudRate = 115200;
    wanted.StopBits = TWOSTOPBITS;
    const DCB state = port.State();
    EXPECT_EQ(std::memcmp(&state, &wanted, sizeof state), 0);
    ASSERT_TRUE(m_line->SetState({}));
  }
}

TEST_F(Win32Line, WhatIsWrittenArrivesAndTheAnswerIsReadInOnePiece) {
  Serve("\"id\" -> \"SIM\" 30 \"-1\\r\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 500, .readTotalConstant = 10000}));
  const IoResult written = Write("id\r");
  EXPECT_TRUE(written.ok);
  EXPECT_EQ(written.bytes, 3U);
  EXPECT_EQ(Read().bytes, "SIM-1\r");
  EXPECT_EQ(m_instrument->Received(), "id\r");
}

TEST_F(Win32Line, EveryByteGoesOutAndComesBackUnchanged) {
  Serve("* -> echo");
  ASSERT_TRUE(m_line->SetState({.baudRate = 115200}));
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 500, .readTotalConstant = 10000}));
  std::string bytes;
  // For the instrument CR, LF, STX and ETX frame a command.
  for (int byte = 0; byte < 256; ++byte) {
    if (byte != 2 && byte != 3 && byte != '\n' && byte != '\r') bytes += static_cast<char>(byte);
  }
  bytes += '\r';
  ASSERT_TRUE(Write(bytes).ok);
  EXPECT_EQ(Read().bytes, bytes);
}

TEST_F(Win32Line, SilenceEndsAReadNoSoonerThanTheInterval) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 300, .readTotalConstant = 10000}));
  ASSERT_TRUE(Write("id\r").ok);
  const std::int64_t taken = MillisecondsOf([this] { EXPECT_EQ(Read().bytes, "SIM"); });
  EXPECT_GE(taken, 290);
  EXPECT_LT(taken, 9000);
}

TEST_F(Win32Line, TheTotalEndsAReadWithoutAByte) {
  Serve("");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 5, .readTotalMultiplier = 10, .readTotalConstant = 130}));
  ReadOutcome outcome;
  const std::int64_t taken = MillisecondsOf([&] { outcome = Read(7); });
  EXPECT_TRUE(outcome.result.ok) << "a time-out is no failure";
  EXPECT_EQ(outcome.result.bytes, 0U);
  EXPECT_GE(taken, 190);
}

TEST_F(Win32Line, APurgeDropsWhatWaits) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 100, .readTotalConstant = 300}));
  ASSERT_TRUE(Write("id\r").ok);
  ASSERT_TRUE(Eventually([this] { return m_instrument->Answers() == 1; }));
  EXPECT_TRUE(m_line->Purge());
  EXPECT_TRUE(m_line->ClearError());
  EXPECT_EQ(Read().bytes, "");
}

TEST_F(Win32Line, AfterCancelIoNothingIsReadOrWrittenUntilItIsAllowed) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 100, .readTotalConstant = 10000}));
  m_line->CancelIo();
  const IoResult read = Read().result;
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Cancelled);
  const IoResult written = Write("id\r");
  EXPECT_FALSE(written.ok);
  EXPECT_EQ(written.failure.kind, LineError::Cancelled);
  m_line->AllowIo();
  EXPECT_TRUE(Write("id\r").ok);
  EXPECT_EQ(Read().bytes, "SIM");
}

TEST_F(Win32Line, CancelIoEndsAReadOnASilentLine) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 100, .readTotalConstant = 600'000}));
  auto reading = InThread([this] { return Read().result; });
  EXPECT_TRUE(StillRuns(reading));
  m_line->CancelIo();
  ASSERT_TRUE(Ends(reading)) << "ten minutes were left of it";
  const IoResult read = reading.get();
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Cancelled);
  m_line->AllowIo();
  EXPECT_TRUE(Write("id\r").ok);
  EXPECT_EQ(Read().bytes, "SIM");
}

TEST_F(Win32Line, CloseEndsOneToo) {
  Serve("");
  ASSERT_TRUE(m_line->SetTimeouts({.readTotalConstant = 600'000}));
  auto reading = InThread([this] { return Read().result; });
  EXPECT_TRUE(StillRuns(reading));
  EXPECT_TRUE(m_line->Close());
  ASSERT_TRUE(Ends(reading));
  const IoResult read = reading.get();
  EXPECT_FALSE(read.ok);
  EXPECT_EQ(read.failure.kind, LineError::Disconnected);
}

TEST_F(Win32Line, AClosedLineSaysSo) {
  Serve("");
  EXPECT_TRUE(m_line->Close());
  m_line->AllowIo();
  LineState state;
  for (const IoResult& result : {Read().result, Write("x")}) {
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.failure.kind, LineError::Disconnected);
  }
  for (const LineResult& result :
       {m_line->GetState(state), m_line->SetState(state), m_line->SetTimeouts({}),
        m_line->SetModemLines({.dtr = true}), m_line->Purge(), m_line->ClearError()}) {
    EXPECT_FALSE(result);
    EXPECT_EQ(result.Failure().kind, LineError::Disconnected);
  }
  EXPECT_TRUE(m_line->Close()) << "closing twice does no harm";
}

struct ErrorRow {
  unsigned long code;
  LineError kind;
};
void PrintTo(const ErrorRow& row, std::ostream* out) { *out << row.code; }

class Win32Error : public testing::TestWithParam<ErrorRow> {};

TEST_P(Win32Error, HasItsKindAndTheSystemsWords) {
  const LineFailure failure = FailureOfSystemError(GetParam().code, QStringLiteral("COM3"));
  EXPECT_EQ(failure.kind, GetParam().kind);
  EXPECT_TRUE(failure.reason.startsWith(QStringLiteral("COM3: ")));
  EXPECT_GT(failure.reason.size(), 10);
  EXPECT_FALSE(failure.reason.endsWith(u'\n'));
}

INSTANTIATE_TEST_SUITE_P(Codes, Win32Error,
                         testing::Values(ErrorRow{ERROR_FILE_NOT_FOUND, LineError::NotFound},
                                         ErrorRow{ERROR_PATH_NOT_FOUND, LineError::NotFound},
                                         ErrorRow{ERROR_ACCESS_DENIED, LineError::InUse},
                                         ErrorRow{ERROR_SHARING_VIOLATION, LineError::InUse},
                                         ErrorRow{ERROR_PRIVILEGE_NOT_HELD, LineError::NoPermission},
                                         ErrorRow{ERROR_INVALID_PARAMETER, LineError::Refused},
                                         ErrorRow{ERROR_OPERATION_ABORTED, LineError::Cancelled},
                                         ErrorRow{ERROR_GEN_FAILURE, LineError::Disconnected},
                                         ErrorRow{ERROR_DEVICE_REMOVED, LineError::Disconnected},
                                         ErrorRow{ERROR_OUTOFMEMORY, LineError::Other},
                                         ErrorRow{0xE0001234, LineError::Other}));

}  // namespace
}  // namespace quarn
