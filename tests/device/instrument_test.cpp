#include "device/instrument.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "support/served_instrument.h"

namespace quarn::test {
namespace {

using device::Command;
using device::TakeCommands;

TEST(TakeCommands, EndAtEveryLineEnd) {
  std::string received("a\rb\nc\r\nd\x03rest");
  const std::vector<Command> commands = TakeCommands(received);
  ASSERT_EQ(commands.size(), 4U);
  EXPECT_EQ(commands[0].text, "a");
  EXPECT_EQ(commands[0].after, "\r");
  EXPECT_EQ(commands[1].after, "\n");
  EXPECT_EQ(commands[2].text, "c");
  EXPECT_EQ(commands[2].after, "\r\n");
  EXPECT_EQ(commands[3].text, "d");
  EXPECT_EQ(received, "rest");
}

TEST(TakeCommands, AFrameEndsAtItsEtxOnly) {
  std::string received("\x02one\rtwo\x03\x02half");
  const std::vector<Command> commands = TakeCommands(received);
  ASSERT_EQ(commands.size(), 1U);
  EXPECT_EQ(commands[0].text, "one\rtwo");
  EXPECT_EQ(commands[0].before, "\x02");
  EXPECT_EQ(commands[0].after, "\x03");
  EXPECT_EQ(received, "\x02half");
}

TEST(TakeCommands, AnEmptyCommandIsOne) {
  std::string received("\r");
  const std::vector<Command> commands = TakeCommands(received);
  ASSERT_EQ(commands.size(), 1U);
  EXPECT_EQ(commands[0].text, "");
}

TEST(TakeCommands, AnStxStartsAnew) {
  std::string received("\x02never closed\x02id\x03noise\x02two\x03");
  const std::vector<Command> commands = TakeCommands(received);
  ASSERT_EQ(commands.size(), 2U);
  EXPECT_EQ(commands[0].text, "id");
  EXPECT_EQ(commands[0].before, "\x02");
  EXPECT_EQ(commands[1].text, "two");
  EXPECT_EQ(received, "");
}

TEST(TakeCommands, WhatNeverEndsIsDropped) {
  for (const char* start : {"", "\x02"}) {
    std::string received(start);
    received.resize(device::kLongestCommandBytes, 'x');
    EXPECT_TRUE(TakeCommands(received).empty());
    EXPECT_EQ(received.size(), device::kLongestCommandBytes);
    received += 'x';
    EXPECT_TRUE(TakeCommands(received).empty());
    EXPECT_EQ(received, "");
    received = "id\r";
    EXPECT_EQ(TakeCommands(received).size(), 1U);
  }
}

/// The near side of the line, read with a limit.
class NearSide {
 public:
  explicit NearSide(const QString& node) : m_fd(::open(node.toLocal8Bit().constData(), O_RDWR | O_NOCTTY)) {}
  ~NearSide() { ::close(m_fd); }
  NearSide(const NearSide&) = delete;
  NearSide& operator=(const NearSide&) = delete;
  void Send(std::string_view bytes) {
    ASSERT_EQ(::write(m_fd, bytes.data(), bytes.size()), ssize_t(bytes.size()));
  }
  /// What comes until `count` bytes are there or the line breaks.
  std::string Receive(std::size_t count) {
    std::string bytes;
    std::array<char, 512> buffer{};
    pollfd polled{m_fd, POLLIN, 0};
    while (bytes.size() < count && ::poll(&polled, 1, 10000) > 0) {
      const ssize_t got = ::read(m_fd, buffer.data(), buffer.size());
      if (got <= 0) break;
      bytes.append(buffer.data(), static_cast<std::size_t>(got));
    }
    return bytes;
  }

 private:
  int m_fd;
};

TEST(Instrument, AnswersFramedAsItWasAsked) {
  ServedInstrument instrument("\"id\" -> line \"SIM\"");
  NearSide line(instrument.NodePath());
  line.Send("id\r");
  EXPECT_EQ(line.Receive(4), "SIM\r");
  line.Send("id\r\n");
  EXPECT_EQ(line.Receive(5), "SIM\r\n");
  line.Send("\x02id\x03");
  EXPECT_EQ(line.Receive(5), "\x02SIM\x03");
  EXPECT_EQ(instrument.Received(), "id\rid\r\n\x02id\x03");
}

TEST(Instrument, EchoesAndPauses) {
  ServedInstrument instrument("\"e\" -> echo\n\"p\" -> \"a\" 20 \"b\"");
  NearSide line(instrument.NodePath());
  line.Send("e\n");
  EXPECT_EQ(line.Receive(2), "e\n");
  line.Send("p\r");
  EXPECT_EQ(line.Receive(2), "ab");
}

TEST(Instrument, AFloodEndsWithTheNextCommand) {
  ServedInstrument instrument("\"f\" -> flood\n\"id\" -> line \"SIM\"");
  NearSide line(instrument.NodePath());
  line.Send("f\r");
  EXPECT_GE(line.Receive(3000).size(), 3000U);
  line.Send("id\r");
  std::string seen;
  while (!seen.ends_with("SIM\r")) {
    const std::string more = line.Receive(1);
    ASSERT_FALSE(more.empty());
    seen += more;
  }
}

TEST(Instrument, RecoversFromAFrameThatIsNeverClosed) {
  ServedInstrument instrument("\"id\" -> line \"SIM\"");
  NearSide line(instrument.NodePath());
  line.Send("\x02unclosed");
  line.Send("\x02id\x03");
  EXPECT_EQ(line.Receive(5), "\x02SIM\x03");
  line.Send("\x02unclosed\r");
  const std::string much(1000, 'x');
  for (int i = 0; i < 10; ++i) line.Send(much);
  line.Send("\rid\r");
  EXPECT_EQ(line.Receive(4), "SIM\r");
}

TEST(Instrument, KeepsARecordWhenAsked) {
  device::Instrument instrument(device::ParseRules("* -> echo"));
  std::thread serving([&instrument] { instrument.Run(); });
  NearSide line(QString::fromStdString(instrument.NodePath()));
  line.Send("id\r");
  EXPECT_EQ(line.Receive(3), "id\r");
  EXPECT_EQ(instrument.Received(), "");
  instrument.Stop();
  serving.join();
}

TEST(Instrument, HangsUp) {
  ServedInstrument instrument("\"bye\" -> hangup");
  NearSide line(instrument.NodePath());
  line.Send("bye\r");
  EXPECT_EQ(line.Receive(1), "");
}

}  // namespace
}  // namespace quarn::test
