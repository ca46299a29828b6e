#include "terminal/transaction.h"

#include "terminal/transaction_fixture.h"

namespace quarn {
namespace {

struct ExchangeRow {
  const char* delimiter;
  std::string sent;
};
void PrintTo(const ExchangeRow& row, std::ostream* out) { *out << row.delimiter; }

class Exchange : public TransactionTest, public testing::WithParamInterface<ExchangeRow> {};

TEST_P(Exchange, SendsTheFramedCommandAndCleansTheResponse) {
  m_settings.delimiter = QString::fromLatin1(GetParam().delimiter);
  Serve("\"id\" -> line \"one\" line \"two\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "one\rtwo\r");
  EXPECT_FALSE(m_outcome.lineFailed);
  EXPECT_EQ(m_instrument->Received(), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(Delimiters, Exchange,
                         testing::Values(ExchangeRow{"CR", "id\r"}, ExchangeRow{"LF", "id\n"},
                                         ExchangeRow{"CRLF", "id\r\n"}, ExchangeRow{"STX_ETX", "\x02id\x03"},
                                         ExchangeRow{"unknown", "id\r"}));

TEST_F(TransactionTest, TheByteCountLeavesOutTheLastByte) {
  Serve("\"id\" -> \"12345\\r\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(m_outcome.byteCount, 5);
  EXPECT_FALSE(m_outcome.lineFailed);
}

TEST_F(TransactionTest, TheRawResponseIsAsItCame) {
  m_settings.delimiter = QStringLiteral("STX_ETX");
  Serve("\"id\" -> line \"SIM\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(m_outcome.raw, "\x02SIM\x03");
}

TEST_F(TransactionTest, OneCommandAfterTheOther) {
  Serve("\"a\" -> line \"first\"\n\"b\" -> line \"second\"");
  EXPECT_EQ(Run("a"), TransactionResult::Received);
  EXPECT_EQ(Response(), "first\r");
  EXPECT_EQ(Run("b"), TransactionResult::Received);
  EXPECT_EQ(Response(), "second\r");
  EXPECT_EQ(m_instrument->Received(), "a\rb\r");
  EXPECT_FALSE(m_engine->IsBusy());
}

TEST_F(TransactionTest, TheDelimiterDoesNotEndAResponse) {
  BearLongPauses();
  Serve("\"id\" -> \"one\\rtwo\\r\" 40 \"three\\r\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "one\rtwo\rthree\r");
}

TEST_F(TransactionTest, AResponseNeedsNoDelimiter) {
  Serve("\"id\" -> \"bare\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "bare");
}

TEST_F(TransactionTest, PausesShorterThanTheSilenceDoNotEndAResponse) {
  BearLongPauses();
  // Together they are longer.
  Serve("\"id\" -> \"1\" 300 \"2\" 300 \"3\" 300 \"4\" 300 \"5\" 300 \"6\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "123456");
}

TEST_F(TransactionTest, APauseLongerThanTheSilenceEndsIt) {
  m_settings.comBps = QStringLiteral("115200");  // silence of 12 ms
  Serve("\"id\" -> \"first\\r\" 600000 \"second\\r\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "first\r");
}

TEST_F(TransactionTest, ANulEndsTheTextOfAResponse) {
  Serve("\"id\" -> \"AB\\x00CD\\r\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "AB");
  EXPECT_EQ(m_outcome.raw, QByteArray("AB\0CD\r", 6));
  EXPECT_EQ(m_outcome.byteCount, 5);
}

TEST_F(TransactionTest, ANulAtTheStartLeavesNothing) {
  Serve("\"id\" -> \"\\x00CD\\r\"");
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
}

TEST_F(TransactionTest, AFrameWithNothingInItIsInvalidData) {
  m_settings.delimiter = QStringLiteral("STX_ETX");
  Serve("\"id\" -> \"\\x02\\x03\"");
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
  EXPECT_EQ(Response(), "\x02\x03") << "as it came";
  EXPECT_EQ(m_outcome.byteCount, 1);
}

TEST_F(TransactionTest, LineFeedsAloneAreInvalidDataWhereTheyAreOnlyHalfALineEnd) {
  m_settings.delimiter = QStringLiteral("CRLF");
  Serve("\"id\" -> \"\\n\\n\"");
  EXPECT_EQ(Run("id"), TransactionResult::InvalidData);
}

TEST_F(TransactionTest, ABareLineEndIsAResponse) {
  m_settings.delimiter = QStringLiteral("LF");
  Serve("\"id\" -> \"\\n\"");
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "\r");
}

TEST_F(TransactionTest, EveryByteButNulComesThrough) {
  QByteArray bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  Serve("\"id\" -> \"\\x" + bytes.toHex('/').replace('/', "\\x").toStdString() + '"');
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), bytes);
}

struct LimitRow {
  const char* comBuf;
  int limit;
};
void PrintTo(const LimitRow& row, std::ostream* out) { *out << row.comBuf; }

class Limit : public TransactionTest, public testing::WithParamInterface<LimitRow> {
 protected:
  TransactionResult RunWithResponseOf(int bytes) {
    m_settings.comBuf = QString::fromLatin1(GetParam().comBuf);
    BearLongPauses();
    Serve("\"big\" -> \"x\" * " + std::to_string(bytes));
    return Run("big");
  }
};

TEST_P(Limit, AResponseOfExactlyTheLimitIsComplete) {
  EXPECT_EQ(RunWithResponseOf(GetParam().limit), TransactionResult::Received);
  EXPECT_EQ(Response(), QByteArray(GetParam().limit, 'x'));
  EXPECT_EQ(m_outcome.byteCount, GetParam().limit - 1);
  EXPECT_FALSE(m_outcome.lineFailed);
}

TEST_P(Limit, OneByteMoreIsStillComplete) {
  EXPECT_EQ(RunWithResponseOf(GetParam().limit + 1), TransactionResult::Received);
  EXPECT_EQ(Response(), QByteArray(GetParam().limit + 1, 'x'));
  EXPECT_EQ(m_outcome.byteCount, GetParam().limit);
  EXPECT_FALSE(m_outcome.lineFailed);
}

TEST_P(Limit, TwoBytesMoreAreAnOverflowCutAtTheLimit) {
  EXPECT_EQ(RunWithResponseOf(GetParam().limit + 2), TransactionResult::Overflow);
  EXPECT_EQ(Response(), QByteArray(GetParam().limit, 'x'));
  EXPECT_EQ(m_outcome.byteCount, GetParam().limit + 1);
  EXPECT_EQ(m_outcome.raw, QByteArray(GetParam().limit, 'x'));
  EXPECT_FALSE(m_outcome.lineFailed);
}

INSTANTIATE_TEST_SUITE_P(BufferSizes, Limit,
                         testing::Values(LimitRow{"1K", 1024}, LimitRow{"2K", 2048}, LimitRow{"6K", 6144},
                                         LimitRow{"unknown", 1024}));

TEST_F(TransactionTest, AnOverflowKeepsTheResponseAsItCame) {
  m_settings.delimiter = QStringLiteral("CRLF");
  BearLongPauses();
  Serve("\"big\" -> \"0123456789abcd\\r\\n\" * 100");
  EXPECT_EQ(Run("big"), TransactionResult::Overflow);
  EXPECT_EQ(Response(), QByteArray("0123456789abcd\r\n").repeated(64));
  EXPECT_EQ(m_outcome.byteCount, 1599);
}

TEST_F(TransactionTest, AnOverflowOfNothingButFramingIsInvalidData) {
  m_settings.delimiter = QStringLiteral("CRLF");
  BearLongPauses();
  Serve("\"big\" -> \"\\n\" * 1500");
  EXPECT_EQ(Run("big"), TransactionResult::InvalidData);
  EXPECT_EQ(m_outcome.raw, QByteArray(1024, '\n'));
}

TEST_F(TransactionTest, AFloodThatNeverFallsSilentEndsWithAFullRead) {
  BearLongPauses();
  Serve("\"flood\" -> flood");
  EXPECT_EQ(Run("flood"), TransactionResult::Overflow);
  EXPECT_EQ(m_outcome.byteCount, 8190);
  EXPECT_EQ(Response(), QByteArray(1024, 'F'));
}

/// With the response time-out off only the read's total ends a wait for a line that stays silent.
TEST_F(TransactionTest, ALineSilentUntilTheTotalIsInvalidData) {
  Serve("* -> silence");
  ASSERT_TRUE(SetServedTimeouts(*m_connection.handle.Line(), ShortTotal()));
  EXPECT_EQ(Run("mute"), TransactionResult::InvalidData);
  EXPECT_EQ(m_instrument->Received(), "mute\r");
}

/// The wait ends also for an instrument that neither falls silent nor fills the read.
TEST_F(TransactionTest, ATrickleThatNeverFallsSilentEndsAtTheTotal) {
  std::string rule = "\"drip\" ->";
  for (int i = 0; i < 100; ++i) rule += " 50 \"x\"";
  Serve(rule);
  ASSERT_TRUE(SetServedTimeouts(*m_connection.handle.Line(), ShortTotal()));
  EXPECT_EQ(Run("drip"), TransactionResult::Received);
  EXPECT_EQ(m_instrument->Answers(), 0) << "it has more to say";
  EXPECT_FALSE(Response().isEmpty());
  EXPECT_EQ(Response(), QByteArray(Response().size(), 'x'));
}

/// Of this line, or of another program that had it before.
TEST_F(TransactionTest, WhatCameBeforeTheOpenIsInNoAnswer) {
  Serve("\"early\" -> \"old\" \n \"id\" -> \"new\"");
  const std::shared_ptr<SerialLine> former = m_connection.handle.Line();
  ASSERT_TRUE(former->Write("early\r", 6).ok);
  ASSERT_TRUE(Eventually([this] { return m_instrument->Answers() == 1; }));
  ASSERT_TRUE(ClosePort(m_connection));
  const OpenResult opened = OpenServedLine(*m_instrument);
  ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
  ASSERT_TRUE(SetServedTimeouts(*opened.line, TimeoutsOf(m_settings.comBps, m_settings.portSpeed)));
  m_connection.handle = PortHandle(opened.line);
  EXPECT_EQ(Run("id"), TransactionResult::Received);
  EXPECT_EQ(Response(), "new");
  EXPECT_EQ(m_outcome.raw, "new");
}

TEST_F(TransactionTest, ACommandTooLongToSendIsNotSent) {
  SetShortestTimeout();
  Serve("* -> line \"ERR\"");
  EXPECT_EQ(Run(std::string(1023, 'x').c_str()), TransactionResult::Timeout);
  EXPECT_EQ(m_instrument->Received(), "");
}

TEST_F(TransactionTest, ATerminatorInsideTheCommandCutsIt) {
  Serve("\"id\" -> line \"SIM\"\n* -> line \"ERR\"");
  EXPECT_EQ(Run("id\rreset"), TransactionResult::Received);
  EXPECT_EQ(Response(), "SIM\r");
  EXPECT_EQ(m_instrument->Received(), "id\r");
}

}  // namespace
}  // namespace quarn
