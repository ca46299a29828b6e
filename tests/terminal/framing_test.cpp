#include "terminal/framing.h"

#include "serial/line_test_support.h"
#include "support/scripted_line.h"

namespace quarn {
namespace {

struct FramingRow {
  const char* delimiter;
  QByteArray id;
  char terminator;
};
void PrintTo(const FramingRow& row, std::ostream* out) { *out << row.delimiter; }

class Framing : public testing::TestWithParam<FramingRow> {};

TEST_P(Framing, OfACommand) {
  const FramedCommand framed = FrameCommand(QString::fromLatin1(GetParam().delimiter), "id");
  EXPECT_EQ(framed.bytes, GetParam().id);
  EXPECT_EQ(framed.terminator, GetParam().terminator);
}

INSTANTIATE_TEST_SUITE_P(Delimiters, Framing,
                         testing::Values(FramingRow{"CR", "id\r", '\r'}, FramingRow{"LF", "id\n", '\n'},
                                         FramingRow{"CRLF", "id\r\n", '\n'},
                                         FramingRow{"STX_ETX", "\x02id\x03", '\x03'},
                                         FramingRow{"", "id\r", '\r'}, FramingRow{"cr", "id\r", '\r'},
                                         FramingRow{"LFCR", "id\r", '\r'},
                                         FramingRow{"CRLF ", "id\r", '\r'}));

TEST(FrameCommand, OfAnEmptyCommandIsTheFrameAlone) {
  EXPECT_EQ(FrameCommand(QStringLiteral("CR"), QByteArray()).bytes, "\r");
  EXPECT_EQ(FrameCommand(QStringLiteral("STX_ETX"), QByteArray()).bytes, "\x02\x03");
}

TEST(FrameCommand, KeepsEveryByteOfTheCommand) {
  QByteArray bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(FrameCommand(QStringLiteral("LF"), bytes).bytes, bytes + '\n');
  EXPECT_EQ(FrameCommand(QStringLiteral("STX_ETX"), bytes).bytes, '\x02' + bytes + '\x03');
}

TEST(TransmissionOf, TellsWhatSendingLeavesOut) {
  const auto of = [](const char* delimiter, const QByteArray& command) {
    return TransmissionOf(QString::fromLatin1(delimiter), command);
  };
  EXPECT_EQ(of("CR", ""), Transmission::Whole);
  EXPECT_EQ(of("CR", "id"), Transmission::Whole);
  EXPECT_EQ(of("CR", "one\rtwo"), Transmission::CutShort);
  EXPECT_EQ(of("CR", "\rtwo"), Transmission::CutShort);
  EXPECT_EQ(of("LF", "one\rtwo"), Transmission::Whole);
  EXPECT_EQ(of("CRLF", "one\r\ntwo"), Transmission::CutShort);
  EXPECT_EQ(of("CRLF", "one\rtwo"), Transmission::Whole);
  EXPECT_EQ(of("STX_ETX",
               "a\x03"
               "b"),
            Transmission::CutShort);
  EXPECT_EQ(of("STX_ETX",
               "\x02"
               "a\rb"),
            Transmission::Whole);
  // No byte of the command is lost.
  EXPECT_EQ(of("CR", "id\r"), Transmission::Whole);
  EXPECT_EQ(of("CRLF", "id\r\n"), Transmission::Whole);
  EXPECT_EQ(of("STX_ETX", "id\x03"), Transmission::Whole);
  EXPECT_EQ(of("CR", "id\r\r"), Transmission::CutShort);
  EXPECT_EQ(of("CR", QByteArray(1022, 'x')), Transmission::Whole);
  EXPECT_EQ(of("CR", QByteArray(1023, 'x')), Transmission::Nothing);
  EXPECT_EQ(of("STX_ETX", QByteArray(1021, 'x')), Transmission::Whole);
  EXPECT_EQ(of("STX_ETX", QByteArray(1022, 'x')), Transmission::Nothing);
  EXPECT_EQ(of("CR", "id\r" + QByteArray(2000, 'x')), Transmission::CutShort);
}

class SendFramedTest : public testing::Test {
 protected:
  bool Send(const char* delimiter, const QByteArray& command) {
    return SendFramed(m_line, FrameCommand(QString::fromLatin1(delimiter), command));
  }
  [[nodiscard]] const QByteArray& Sent() const { return m_line.written; }

  Journal m_journal;
  ScriptedLine m_line{m_journal};
};

TEST_F(SendFramedTest, SendsUpToAndIncludingTheTerminator) {
  EXPECT_TRUE(Send("CRLF", "id"));
  EXPECT_EQ(Sent(), "id\r\n");
}

TEST_F(SendFramedTest, ATerminatorInsideCutsTheCommandBehindIt) {
  EXPECT_TRUE(Send("CR", "one\rtwo"));
  EXPECT_EQ(Sent(), "one\r");
}

TEST_F(SendFramedTest, ATerminatorInsideCutsForEveryDelimiter) {
  EXPECT_TRUE(Send("CRLF", "a\rb\nc"));
  EXPECT_TRUE(Send("STX_ETX",
                   "d\x03"
                   "e"));
  EXPECT_TRUE(Send("LF", "\nf"));
  EXPECT_EQ(Sent(), QByteArray("a\rb\n\x02"
                               "d\x03\n"));
}

TEST_F(SendFramedTest, AtMost1023BytesGoOut) {
  EXPECT_TRUE(Send("CR", QByteArray(1022, 'x')));
  EXPECT_EQ(Sent(), QByteArray(1022, 'x') + '\r');
}

TEST_F(SendFramedTest, WithTheTerminatorBehindThatNothingIsSent) {
  EXPECT_FALSE(Send("CR", QByteArray(1023, 'x')));
  EXPECT_FALSE(Send("CRLF", QByteArray(1022, 'x')));
  EXPECT_FALSE(Send("STX_ETX", QByteArray(1022, 'x')));
  EXPECT_FALSE(Send("CR", QByteArray(100'000, 'x')));
  EXPECT_EQ(m_journal.Entries(), std::vector<std::string>{});
  EXPECT_TRUE(Send("CRLF", QByteArray(1021, 'x')));
  EXPECT_TRUE(Send("STX_ETX", QByteArray(1021, 'x')));
}

TEST_F(SendFramedTest, TheFrameCountsInBytesNotInCharacters) {
  const QByteArray euro = "\xe2\x82\xac";
  EXPECT_FALSE(Send("CR", euro.repeated(341)));
  EXPECT_EQ(Sent(), "");
  EXPECT_TRUE(Send("CR", euro.repeated(340)));
  EXPECT_EQ(Sent(), euro.repeated(340) + '\r');
}

TEST_F(SendFramedTest, AnEarlyTerminatorSavesALongCommand) {
  EXPECT_TRUE(Send("CR", "id\r" + QByteArray(5000, 'x')));
  EXPECT_EQ(Sent(), "id\r");
}

TEST_F(SendFramedTest, AWriteThatFailsOrFallsShortIsNoSuccess) {
  m_line.write = [](const char*, std::size_t) { return IoResult{}; };
  EXPECT_FALSE(Send("CR", "id"));
  m_line.write = [](const char*, std::size_t) { return IoResult{.ok = true, .bytes = 2}; };
  EXPECT_FALSE(Send("CR", "id"));
}

struct ResponseRow {
  const char* delimiter;
  QByteArray response;
  QByteArray clean;
};

TEST(NormaliseResponse, TreatsEveryOccurrence) {
  const QByteArray mixed(
      "\x02"
      "a\r\nb\nc\x03\x02"
      "d\x03");
  const std::vector<ResponseRow> rows = {
      {"CR", mixed, mixed},
      {"LF", mixed,
       QByteArray("\x02"
                  "a\r\rb\rc\x03\x02"
                  "d\x03")},
      {"CRLF", mixed,
       QByteArray("\x02"
                  "a\rbc\x03\x02"
                  "d\x03")},
      {"STX_ETX", mixed, QByteArray("a\r\nb\nc\rd\r")},
      {"", mixed, mixed},
      {"lf", mixed, mixed},
      {"CR", "", ""},
      {"LF", "\n", "\r"},
      {"CRLF", "\n\n", ""},
      {"CRLF", "\r\n\r\n", "\r\r"},
      {"STX_ETX", "\x02", ""},
      {"STX_ETX", "\x02\x03", "\r"},
  };
  for (const ResponseRow& row : rows) {
    EXPECT_EQ(NormaliseResponse(QString::fromLatin1(row.delimiter), row.response), row.clean)
        << row.delimiter << " " << row.response.toHex(' ').constData();
  }
}

TEST(HoldsOnlyFraming, TellsAnEmptyResponseFromAnEmptyLine) {
  const std::vector<std::pair<const char*, QByteArray>> empty = {
      {"CR", ""},      {"LF", ""},          {"CRLF", "\n"},          {"CRLF", "\n\n"},
      {"STX_ETX", ""}, {"STX_ETX", "\x02"}, {"STX_ETX", "\x02\x03"}, {"STX_ETX", "\x03\x02\x03"}};
  for (const auto& [delimiter, response] : empty) {
    EXPECT_TRUE(HoldsOnlyFraming(QString::fromLatin1(delimiter), response)) << delimiter;
  }
  const std::vector<std::pair<const char*, QByteArray>> lines = {
      {"CR", "\r"},      {"LF", "\n"},       {"CRLF", "\r\n"},       {"STX_ETX", "\x02\r\x03"},
      {"STX_ETX", "\n"}, {"CR", "\x02\x03"}, {"CRLF", "\x02\x03\n"}, {"LF", "\x03"}};
  for (const auto& [delimiter, response] : lines) {
    EXPECT_FALSE(HoldsOnlyFraming(QString::fromLatin1(delimiter), response)) << delimiter;
  }
}

}  // namespace
}  // namespace quarn
