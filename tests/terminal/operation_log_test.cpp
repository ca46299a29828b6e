#include "terminal/operation_log.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

const QString kOff = QStringLiteral("OFF");
const QString kOn = QStringLiteral("ON");

/// `count` lines "L1\r", "L2\r", ...
QByteArray Lines(int first, int count) {
  QByteArray text;
  for (int i = first; i < first + count; ++i) text += 'L' + QByteArray::number(i) + '\r';
  return text;
}

void Fill(OperationLog& log, int lines) {
  for (int done = 0; done < lines;) {
    const int count = std::min(100, lines - done);
    ASSERT_TRUE(log.BeginTransaction());
    log.AppendLogText(Lines(done + 1, count));
    done += count;
  }
}

TEST(OperationLog, StartsEmpty) {
  const OperationLog log;
  EXPECT_EQ(log.LineCount(), 0);
  EXPECT_EQ(log.WritePos(), 0);
  EXPECT_EQ(log.TopLine(), 0);
  EXPECT_EQ(log.RowsInUse(), 0);
  EXPECT_FALSE(log.HasContent());
  for (int row = 0; row < ScreenRowCount; ++row) EXPECT_EQ(log.RowText(row, kOn), QString());
}

TEST(OperationLog, StoresLinesWithTheirCr) {
  OperationLog log;
  log.AppendLogText("[id]\rOK\r");
  ASSERT_EQ(log.LineCount(), 2);
  EXPECT_EQ(log.WritePos(), 2);
  EXPECT_TRUE(log.HasContent());
  EXPECT_EQ(log.Line(0), QByteArray("[id]\r"));
  EXPECT_EQ(log.Line(1), QByteArray("OK\r"));
  EXPECT_EQ(log.RowText(1, kOff), QStringLiteral("OK\r"));
  EXPECT_EQ(log.RowText(2, kOff), QString());
}

TEST(OperationLog, KeepsALastPieceWithoutCr) {
  OperationLog log;
  log.AppendLogText("a\rb");
  ASSERT_EQ(log.LineCount(), 2);
  EXPECT_EQ(log.Line(1), QByteArray("b"));
}

TEST(OperationLog, TwoCrsLeaveAnEmptyLine) {
  OperationLog log;
  log.AppendLogText("Error\r\r");
  ASSERT_EQ(log.LineCount(), 2);
  EXPECT_EQ(log.Line(1), QByteArray("\r"));
}

TEST(OperationLog, ATextOf8192CharactersIsSplitAndALongerOneAddsNothing) {
  OperationLog log;
  log.AppendLogText(QByteArray(8191, 'x') + '\r');
  EXPECT_EQ(log.LineCount(), 1);
  log.AppendLogText(QByteArray(8192, 'x') + '\r');
  EXPECT_EQ(log.LineCount(), 1);
  EXPECT_EQ(log.RowsInUse(), 1);
}

TEST(OperationLog, ShowsTheNewestLineAfterEveryAppend) {
  OperationLog log;
  Fill(log, 32);
  EXPECT_EQ(log.TopLine(), 0);
  EXPECT_EQ(log.RowsInUse(), 32);
  log.AppendLogText("a\rb\r");
  EXPECT_EQ(log.TopLine(), 2);
  EXPECT_EQ(log.RowText(31, kOff), QStringLiteral("b\r"));
  EXPECT_EQ(log.RowsInUse(), 32);
}

TEST(OperationLog, AViewThatWasScrolledUpJumpsToTheNewestLine) {
  OperationLog log;
  Fill(log, 100);
  for (int i = 0; i < 50; ++i) log.ScrollLogUp();
  EXPECT_EQ(log.TopLine(), 18);
  log.AppendLogText("new\r");
  EXPECT_EQ(log.TopLine(), 69);
  EXPECT_EQ(log.RowText(31, kOff), QStringLiteral("new\r"));
}

TEST(OperationLog, AViewAtTheVeryEndKeepsTheNewestLineInSight) {
  OperationLog log;
  Fill(log, 100);
  for (int i = 0; i < 100; ++i) log.ScrollLogDown();
  EXPECT_EQ(log.TopLine(), 99);
  log.AppendLogText("a\rb\r");
  EXPECT_EQ(log.LineCount(), 102);
  EXPECT_EQ(log.TopLine(), 101);
  EXPECT_EQ(log.RowText(0, kOff), QStringLiteral("b\r"));
}

TEST(OperationLog, AViewBelowTheNewestLinesMovesOnByThoseThatCame) {
  OperationLog log;
  Fill(log, 100);
  for (int i = 0; i < 11; ++i) log.ScrollLogDown();
  EXPECT_EQ(log.TopLine(), 79);
  log.AppendLogText("a\rb\r");
  EXPECT_EQ(log.TopLine(), 81);
}

TEST(OperationLog, TheLastFreeSlotTakesTheFirstLineAndTheRestIsDropped) {
  OperationLog log;
  Fill(log, 3999);
  ASSERT_TRUE(log.BeginTransaction());
  log.AppendLogText("one\rtwo\rthree\r");
  EXPECT_EQ(log.LineCount(), 4000);
  EXPECT_EQ(log.WritePos(), 4000);
  EXPECT_EQ(log.Line(3999), QByteArray("one\r"));
  EXPECT_LT(log.TopLine(), log.LineCount());
  EXPECT_FALSE(log.BeginTransaction());
  EXPECT_EQ(log.WritePos(), 4000);
}

TEST(OperationLog, ManyDroppedLinesDoNotPushTheViewOut) {
  OperationLog log;
  Fill(log, 3999);
  log.AppendLogText(Lines(1, 900));
  EXPECT_EQ(log.LineCount(), 4000);
  EXPECT_LE(log.TopLine(), 3999);
  EXPECT_FALSE(log.RowText(0, kOff).isEmpty());
}

TEST(OperationLog, ScrollsUpToTheFirstLine) {
  OperationLog log;
  Fill(log, 34);
  EXPECT_EQ(log.TopLine(), 2);
  log.ScrollLogUp();
  log.ScrollLogUp();
  EXPECT_EQ(log.TopLine(), 0);
  log.ScrollLogUp();
  EXPECT_EQ(log.TopLine(), 0);
}

TEST(OperationLog, ScrollsDownUntilTheLastLineStandsInRowZero) {
  OperationLog log;
  Fill(log, 5);
  for (int i = 0; i < 10; ++i) log.ScrollLogDown();
  EXPECT_EQ(log.TopLine(), 4);
  EXPECT_EQ(log.RowText(0, kOff), QStringLiteral("L5\r"));
  EXPECT_EQ(log.RowText(1, kOff), QString());
}

TEST(OperationLog, AnEmptyLogDoesNotScroll) {
  OperationLog log;
  log.ScrollLogDown();
  log.ScrollLogUp();
  log.ScrollByWheel(-120);
  EXPECT_EQ(log.TopLine(), 0);
}

TEST(OperationLog, TheWheelMovesByOneLine) {
  OperationLog log;
  Fill(log, 5);
  log.ScrollByWheel(-120);
  EXPECT_EQ(log.TopLine(), 1);
  log.ScrollByWheel(-360);
  EXPECT_EQ(log.TopLine(), 2);
  log.ScrollByWheel(0);
  EXPECT_EQ(log.TopLine(), 2);
  log.ScrollByWheel(120);
  EXPECT_EQ(log.TopLine(), 1);
  log.ScrollByWheel(120);
  log.ScrollByWheel(120);
  EXPECT_EQ(log.TopLine(), 0);
  for (int i = 0; i < 10; ++i) log.ScrollByWheel(-120);
  EXPECT_EQ(log.TopLine(), 4);
}

TEST(FormatLineNumber, IsFourCharactersWide) {
  EXPECT_EQ(FormatLineNumber(7), QStringLiteral("   7"));
  EXPECT_EQ(FormatLineNumber(12), QStringLiteral("  12"));
  EXPECT_EQ(FormatLineNumber(123), QStringLiteral(" 123"));
  EXPECT_EQ(FormatLineNumber(4000), QStringLiteral("4000"));
  EXPECT_EQ(FormatLineNumber(10000), QString());
}

TEST(OperationLog, LineNumbersStandInFrontOfTheLine) {
  OperationLog log;
  Fill(log, 4000);
  EXPECT_EQ(log.RowText(31, kOn), QStringLiteral("4000|  L4000\r"));
  while (log.TopLine() > 0) log.ScrollLogUp();
  EXPECT_EQ(log.RowText(6, kOn), QStringLiteral("   7|  L7\r"));
  EXPECT_EQ(log.RowText(11, kOn), QStringLiteral("  12|  L12\r"));
}

TEST(OperationLog, AnythingButOffShowsLineNumbers) {
  OperationLog log;
  log.AppendLogText("x\r");
  EXPECT_EQ(log.RowText(0, QStringLiteral("off")), QStringLiteral("   1|  x\r"));
  EXPECT_EQ(log.RowText(0, QString()), QStringLiteral("   1|  x\r"));
  EXPECT_EQ(log.RowText(0, kOff), QStringLiteral("x\r"));
}

TEST(OperationLog, CopyPageJoinsExactlyTheLinesInView) {
  OperationLog log;
  Fill(log, 5);
  EXPECT_EQ(log.CopyLogPage(kOff), QStringLiteral("L1\rL2\rL3\rL4\rL5\r"));
  Fill(log, 95);
  const QString page = log.CopyLogPage(kOff);
  EXPECT_EQ(page.count(u'\r'), 32);
  EXPECT_FALSE(page.contains(u'\n'));
  EXPECT_TRUE(page.endsWith(QStringLiteral("L95\r")));
}

TEST(OperationLog, CopyPageNumbersItsLinesAsTheScreenDoes) {
  OperationLog log;
  Fill(log, 100);
  log.ScrollLogUp();
  QString wanted;
  for (int row = 0; row < ScreenRowCount; ++row) wanted += log.RowText(row, kOn);
  EXPECT_EQ(log.CopyLogPage(kOn), wanted);
  EXPECT_TRUE(wanted.startsWith(QStringLiteral("  68|  L68\r  69|  L69\r"))) << wanted.toStdString();
  EXPECT_TRUE(wanted.endsWith(QStringLiteral("  99|  L99\r"))) << wanted.toStdString();
}

TEST(OperationLog, CopyAllHoldsEveryLineWithItsNumberWhenShown) {
  OperationLog log;
  Fill(log, 100);
  EXPECT_EQ(log.CopyLogAll(kOff), QString::fromLatin1(Lines(1, 100)));
  EXPECT_TRUE(log.CopyLogAll(kOn).startsWith(QStringLiteral("   1|  L1\r   2|  L2\r")));
  EXPECT_TRUE(log.CopyLogAll(kOn).endsWith(QStringLiteral(" 100|  L100\r")));
}

TEST(OperationLog, CopyOfAnEmptyLogIsEmpty) {
  const OperationLog log;
  EXPECT_EQ(log.CopyLogAll(kOn), QString());
  EXPECT_EQ(log.CopyLogPage(kOn), QString());
}

TEST(OperationLog, ResetEmptiesEverything) {
  OperationLog log;
  Fill(log, 100);
  log.ResetLog();
  EXPECT_EQ(log.LineCount(), 0);
  EXPECT_EQ(log.WritePos(), 0);
  EXPECT_EQ(log.TopLine(), 0);
  EXPECT_EQ(log.RowsInUse(), 0);
  EXPECT_FALSE(log.HasContent());
  EXPECT_EQ(log.CopyLogAll(kOff), QString());
  EXPECT_TRUE(log.Line(0).isEmpty());
  EXPECT_TRUE(log.BeginTransaction());
}

TEST(OperationLog, CommandsWithOtherLettersAreShownAsTyped) {
  OperationLog log;
  log.AppendLogText(QStringLiteral("[µ5]\r").toLocal8Bit());
  EXPECT_EQ(log.RowText(0, kOff), QStringLiteral("[µ5]\r"));
}

TEST(OperationLog, AnEmptyLineMayComeFirst) {
  OperationLog log;
  log.AppendLogText("\ra\rb\r");
  ASSERT_EQ(log.LineCount(), 3);
  EXPECT_EQ(log.Line(0), QByteArray("\r"));
  EXPECT_EQ(log.Line(1), QByteArray("a\r"));
  EXPECT_EQ(log.Line(2), QByteArray("b\r"));
}

}  // namespace
}  // namespace quarn
