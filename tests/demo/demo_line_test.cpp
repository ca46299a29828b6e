#include "demo/demo_line.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <memory>

#include "demo/demo_ports.h"
#include "serial/open_port.h"
#include "serial/port_connection.h"
#include "serial/port_names.h"
#include "support/transaction_hosts.h"
#include "terminal/transaction.h"

namespace quarn {
namespace {

constexpr std::size_t kReadSize = 8191;

/// A line whose reads end after 10 s of silence, or with `most` bytes.
class DemoLineTest : public testing::Test {
 protected:
  void Serve(const char* rules) {
    m_line = std::make_unique<DemoLine>(device::ParseRules(rules));
    ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 10000}));
  }
  void Send(const QByteArray& bytes) {
    const auto size = static_cast<std::size_t>(bytes.size());
    EXPECT_EQ(m_line->Write(bytes.constData(), size).bytes, size);
  }
  QByteArray Read(std::size_t most) {
    std::array<char, kReadSize> buffer{};
    m_last = m_line->Read(buffer.data(), most);
    return {buffer.data(), static_cast<qsizetype>(m_last.bytes)};
  }

  std::unique_ptr<DemoLine> m_line;
  IoResult m_last;
};

TEST_F(DemoLineTest, AnswersInTheFramingOfTheCommand) {
  Serve("\"id\" -> line \"SIM\"\n\"e\" -> echo");
  Send("id\r");
  EXPECT_EQ(Read(4), "SIM\r");
  Send("\x02id\x03");
  EXPECT_EQ(Read(5), "\x02SIM\x03");
  Send("e\r\n");
  EXPECT_EQ(Read(3), "e\r\n");
}

TEST_F(DemoLineTest, ACommandCanComeInPieces) {
  Serve("\"id\" -> line \"SIM\"");
  Send("i");
  Send("d\r");
  EXPECT_EQ(Read(4), "SIM\r");
}

TEST_F(DemoLineTest, AReadEndsWhenTheLineIsSilentForItsInterval) {
  Serve("\"two\" -> \"one\" 600000 \"two\"");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 20}));
  Send("two\r");
  EXPECT_EQ(Read(kReadSize), "one");
  EXPECT_TRUE(m_last.ok);
}

TEST_F(DemoLineTest, APauseBelowTheIntervalIsWithinTheAnswer) {
  Serve("\"two\" -> \"one\" 30 \"two\"");
  Send("two\r");
  EXPECT_EQ(Read(6), "onetwo");
}

TEST_F(DemoLineTest, AReadWithoutBytesEndsAtItsTotalTime) {
  Serve("\"mute\" -> silence");
  ASSERT_TRUE(m_line->SetTimeouts({.readInterval = 10, .readTotalConstant = 50}));
  Send("mute\r");
  Send("unknown\r");
  const auto begin = LineClock::now();
  EXPECT_EQ(Read(kReadSize), "");
  EXPECT_TRUE(m_last.ok);
  EXPECT_GE(LineClock::now() - begin, std::chrono::milliseconds(50));
}

TEST_F(DemoLineTest, PurgeDropsWhatHasComeAndNothingElse) {
  Serve("\"a\" -> \"A\" 50 \"B\"");
  Send("a\r");
  ASSERT_TRUE(m_line->Purge());
  EXPECT_EQ(Read(1), "B");
}

TEST_F(DemoLineTest, EndlessBytesFillAReadAndEndWithTheNextCommand) {
  Serve("\"flood\" -> flood\n\"id\" -> \"SIM\"");
  Send("flood\r");
  EXPECT_EQ(Read(kReadSize), QByteArray(kReadSize, 'F'));
  Send("id\r");
  EXPECT_EQ(Read(3), "SIM");
}

TEST_F(DemoLineTest, AnInstrumentThatHangsUpEndsTheLineBehindItsBytes) {
  Serve("\"unplug\" -> \"bye\" hangup");
  EXPECT_FALSE(m_line->IsLost());
  Send("unplug\r");
  EXPECT_TRUE(m_line->IsLost());
  EXPECT_EQ(Read(kReadSize), "bye");
  EXPECT_TRUE(m_last.ok);
  EXPECT_EQ(m_last.failure.kind, LineError::Disconnected);
  Read(kReadSize);
  EXPECT_FALSE(m_last.ok);
  EXPECT_FALSE(m_line->SetState({}));
}

TEST_F(DemoLineTest, CancelIoEndsAReadAndLaterOnesUntilAllowIo) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto read = std::async(std::launch::async, [this] { return Read(kReadSize); });
  m_line->CancelIo();
  EXPECT_EQ(read.get(), "");
  EXPECT_EQ(m_last.failure.kind, LineError::Cancelled);
  EXPECT_FALSE(m_last.ok);
  m_line->AllowIo();
  Send("id\r");
  EXPECT_EQ(Read(3), "SIM");
}

TEST_F(DemoLineTest, AReadThatIsCancelledEndsAlsoIfReadingIsAllowedAgainAtOnce) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto read = std::async(std::launch::async, [this] { return Read(kReadSize); });
  // A thread that had no time to begin reading is not cancelled.
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (read.wait_for(std::chrono::milliseconds(300)) == std::future_status::ready) break;
    m_line->CancelIo();
    m_line->AllowIo();
  }
  ASSERT_EQ(read.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "the wake-up was lost";
  EXPECT_EQ(m_last.failure.kind, LineError::Cancelled);
}

TEST_F(DemoLineTest, CloseEndsARead) {
  Serve("\"id\" -> \"SIM\"");
  ASSERT_TRUE(m_line->SetTimeouts({}));
  auto read = std::async(std::launch::async, [this] { return Read(kReadSize); });
  EXPECT_TRUE(m_line->Close());
  read.get();
  EXPECT_EQ(m_last.failure.kind, LineError::Disconnected);
  m_line->AllowIo();
  EXPECT_FALSE(m_line->Write("id\r", 3).ok);
  EXPECT_FALSE(m_line->IsLost());
}

TEST_F(DemoLineTest, KeepsItsParameters) {
  Serve("* -> echo");
  const LineState wanted{
      .baudRate = 115200, .byteSize = 7, .stopBits = StopBits::Two, .parity = Parity::Even};
  ASSERT_TRUE(m_line->SetState(wanted));
  LineState state;
  ASSERT_TRUE(m_line->GetState(state));
  EXPECT_EQ(state, wanted);
}

TEST(DemoPorts, OneIsThereAndCanBeOpened) {
  const auto ports = DemoPortSource().Ports();
  ASSERT_TRUE(ports);
  EXPECT_EQ(*ports, (QList<Port>{{kDemoPort, "Simulated instrument (COM7)"}}));
  DemoLineOpener opener;
  EXPECT_TRUE(opener.Open(DevicePathOf(QLatin1String(kDemoPort))).line);
  const OpenResult other = opener.Open(QStringLiteral("COM8"));
  EXPECT_FALSE(other.line);
  EXPECT_EQ(other.failure.kind, LineError::NotFound);
}

/// Each command of the demo's function keys, as the Terminal Screen sends it.
TEST(DemoPorts, TheEngineGetsTheAnswersOfTheInstrument) {
  SettingsRecord settings;
  settings.comPort = QLatin1String(kDemoPort);
  settings.comBps = QStringLiteral("9600");
  settings.comBuf = QStringLiteral("1K");
  settings.delimiter = QStringLiteral("CR");
  settings.rTimeout = QStringLiteral("OFF");
  PortConnection connection;
  connection.handle = PortHandle(DemoLineOpener().Open(QLatin1String(kDemoPort)).line);
  SetUpStep step{};
  ASSERT_TRUE(SetUpLine(*connection.handle.Line(), LineSetUpOf(settings), step));
  TransactionEngine engine(connection);
  ScriptedHost host;
  const auto response = [&](const char* command) {
    return engine.RunTransaction(settings, host, command).response;
  };
  EXPECT_EQ(response("id"), "SIM-1 bench instrument, firmware 1.00\r");
  EXPECT_EQ(response("slow"), "first half, second half\r");
  EXPECT_EQ(engine.RunTransaction(settings, host, "big").result, TransactionResult::Overflow);
  host.escapeAtLook = host.looks + 1;
  EXPECT_EQ(engine.RunTransaction(settings, host, "mute").result, TransactionResult::Aborted);
  EXPECT_EQ(response("temp?"), "23.5 C\r");
  engine.RunTransaction(settings, host, "unplug");
  EXPECT_TRUE(connection.handle.Line()->IsLost());
}

}  // namespace
}  // namespace quarn
