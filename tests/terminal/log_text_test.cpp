#include "terminal/log_text.h"

#include "serial/line_test_support.h"

namespace quarn {
namespace {

class LogText : public testing::Test {
 protected:
  LogText() {
    m_settings.comBuf = QStringLiteral("1K");
    m_settings.inputMax = QStringLiteral("N");
  }
  QByteArray TextOf(TransactionResult result, const char* command = "id") {
    m_outcome.result = result;
    return LogTextOf(m_outcome, command, m_settings);
  }
  QByteArray TextOfResponse(const QByteArray& response) {
    m_outcome.response = response;
    return TextOf(TransactionResult::Received);
  }

  SettingsRecord m_settings;
  TransactionOutcome m_outcome;
};

TEST_F(LogText, OfErrorsIsOneLineAndAnEmptyOne) {
  m_outcome.response = "left over\r";
  EXPECT_EQ(TextOf(TransactionResult::Timeout), "[id]\rError: Response Timeout Error\r\r");
  EXPECT_EQ(TextOf(TransactionResult::InvalidData), "[id]\rError: Received Invalid Data\r\r");
  EXPECT_EQ(TextOf(TransactionResult::Aborted), "[id]\rWarning: Aborted by ESC Key\r\r");
  EXPECT_EQ(TextOf(TransactionResult::AlreadyRunning), "[id]\rError: Communication Error\r\r");
  EXPECT_EQ(TextOf(TransactionResult::NotSendable), "[id]\rError: Command Cannot Be Sent\r\r");
}

TEST_F(LogText, OfAFullLogIsABareLineEnd) { EXPECT_EQ(TextOf(TransactionResult::LogFull), "\r"); }

TEST_F(LogText, TheResultsHaveTheirNumbers) {
  EXPECT_EQ(static_cast<int>(TransactionResult::Received), 0);
  EXPECT_EQ(static_cast<int>(TransactionResult::Timeout), 1);
  EXPECT_EQ(static_cast<int>(TransactionResult::InvalidData), 2);
  EXPECT_EQ(static_cast<int>(TransactionResult::Overflow), 3);
  EXPECT_EQ(static_cast<int>(TransactionResult::Aborted), 4);
  EXPECT_EQ(static_cast<int>(TransactionResult::AlreadyRunning), -1);
  EXPECT_EQ(static_cast<int>(TransactionResult::LogFull), 255);
}

TEST_F(LogText, OfAResponseIsItsLines) {
  EXPECT_EQ(TextOfResponse("one\rtwo\r"), "[id]\rone\rtwo\r");
  EXPECT_EQ(TextOfResponse("\x02"
                           "A\x05\rB\x7f\xff\r"),
            "[id]\r<STX>A<ENG>\rB<DEL><0xff>\r");
}

TEST_F(LogText, AResponseEndsInExactlyOneLineEnd) {
  EXPECT_EQ(TextOfResponse("SIM"), "[id]\rSIM\r");
  EXPECT_EQ(TextOfResponse("SIM\r"), "[id]\rSIM\r");
  EXPECT_EQ(TextOfResponse("SIM\r\r\r\r"), "[id]\rSIM\r");
  EXPECT_EQ(TextOfResponse("\r"), "[id]\r\r");
  EXPECT_EQ(TextOfResponse("\r\r\r"), "[id]\r\r");
}

TEST_F(LogText, EmptyLinesInsideStay) {
  EXPECT_EQ(TextOfResponse("\r\rone\r\rtwo\r\r"), "[id]\r\r\rone\r\rtwo\r");
}

TEST_F(LogText, LongLinesWrapAtTheWidthOfTheScreen) {
  for (const auto& [inputMax, width] : {std::pair{"N", 48}, {"M", 56}, {"W", 64}, {"", 48}, {"w", 48}}) {
    m_settings.inputMax = QString::fromLatin1(inputMax);
    const QByteArray full(width, 'x');
    EXPECT_EQ(TextOfResponse(full + "\r"), "[id]\r" + full + '\r') << inputMax;
    EXPECT_EQ(TextOfResponse(full + "y"), "[id]\r" + full + "\ry\r") << inputMax;
    EXPECT_EQ(TextOfResponse(full + full + "z\rnext\r"), "[id]\r" + full + '\r' + full + "\rz\rnext\r")
        << inputMax;
  }
}

TEST_F(LogText, WrappingCountsWhatIsSpelledOut) {
  EXPECT_EQ(TextOfResponse(QByteArray(8, '\xa5')), "[id]\r" + QByteArray("<0xa5>").repeated(8) + '\r');
  EXPECT_EQ(TextOfResponse(QByteArray(8, '\xa5') + "!"),
            "[id]\r" + QByteArray("<0xa5>").repeated(8) + "\r!\r");
}

TEST_F(LogText, WhatIsSpelledOutIsBrokenLikeOtherText) {
  const QByteArray most(47, 'x');
  EXPECT_EQ(TextOfResponse(most + "\x02"), "[id]\r" + most + "<\rSTX>\r");
  EXPECT_EQ(TextOfResponse(most.first(46) + "\xa5"), "[id]\r" + most.first(46) + "<0\rxa5>\r");
}

TEST_F(LogText, TheCommandIsEchoedUnwrappedAsItWasRendered) {
  const QByteArray command = QByteArray("\xc2\xb5").repeated(100);
  EXPECT_EQ(LogTextOf({.result = TransactionResult::Timeout}, command, m_settings),
            '[' + command + "]\rError: Response Timeout Error\r\r");
  EXPECT_EQ(TextOf(TransactionResult::Timeout, ""), "[]\rError: Response Timeout Error\r\r");
}

TEST_F(LogText, OfAnOverflowNamesCountAndLimit) {
  m_outcome.response = "cut";
  m_outcome.byteCount = 6145;
  for (const auto& [comBuf, limit] : {std::pair{"1K", "1024"},
                                      {"2K", "2048"},
                                      {"6K", "6144"},
                                      {"", "1024"},
                                      {"8K", "1024"},
                                      {"6k", "1024"}}) {
    m_settings.comBuf = QString::fromLatin1(comBuf);
    EXPECT_EQ(TextOf(TransactionResult::Overflow),
              QByteArray("[id]\r...\rError: Receive Buffer Overflow > 6145 (MAX. ") + limit + ")\r\r")
        << comBuf;
  }
}

TEST_F(LogText, OfAnOverflowReplacesTheLastLine) {
  m_outcome.byteCount = 1500;
  const QByteArray error = "Error: Receive Buffer Overflow > 1500 (MAX. 1024)\r\r";
  m_outcome.response = "one\rtwo\rthr";
  EXPECT_EQ(TextOf(TransactionResult::Overflow), "[id]\rone\rtwo\r...\r" + error);
  m_outcome.response = "one\rtwo\r";
  EXPECT_EQ(TextOf(TransactionResult::Overflow), "[id]\rone\r...\r" + error);
  m_outcome.response = QByteArray(1024, 'x');
  // 21 lines of 48 and one of 16, which is the one that is replaced.
  EXPECT_EQ(TextOf(TransactionResult::Overflow),
            "[id]\r" + (QByteArray(48, 'x') + '\r').repeated(21) + "...\r" + error);
}

TEST_F(LogText, OfAnOverflowSpellsOutTheLineEndsThatWereNotCleaned) {
  m_settings.inputMax = QStringLiteral("W");
  m_outcome.byteCount = 1500;
  m_outcome.response = "one\r\ntwo\r\nthr";
  EXPECT_EQ(TextOf(TransactionResult::Overflow),
            "[id]\rone\r<LF>two\r...\rError: Receive Buffer Overflow > 1500 (MAX. 1024)\r\r");
}

}  // namespace
}  // namespace quarn
