#include "terminal/command_line.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

constexpr int kLimit = 48;

void Type(CommandLine& line, const QString& text, int limit = kLimit) {
  for (const QChar each : text) line.TypeCharacter(each, limit);
}

TEST(CommandLine, TypedCharactersGoWhereTheCursorStands) {
  CommandLine line;
  Type(line, QStringLiteral("id"));
  EXPECT_EQ(line.Text(), QStringLiteral("id"));
  EXPECT_EQ(line.CursorPos(), 2);
  line.MoveLeft();
  Type(line, QStringLiteral("x"));
  EXPECT_EQ(line.Text(), QStringLiteral("ixd"));
  EXPECT_EQ(line.CursorPos(), 2);
}

TEST(CommandLine, OneCharacterBeyondTheLimitIsRefused) {
  CommandLine line;
  Type(line, QString(48, u'a'));
  Type(line, QStringLiteral("b"));
  EXPECT_EQ(line.Text(), QString(48, u'a'));
  EXPECT_EQ(line.CursorPos(), 48);
}

TEST(CommandLine, AFullLineRefusesInsertionInTheMiddleToo) {
  CommandLine line;
  Type(line, QString(48, u'a'));
  line.MoveLeft();
  Type(line, QStringLiteral("b"));
  EXPECT_EQ(line.Text(), QString(48, u'a'));
  EXPECT_EQ(line.CursorPos(), 47);
}

TEST(CommandLine, ABlankGoesToTheEndWithoutALimit) {
  CommandLine line;
  Type(line, QString(48, u'a'));
  for (int i = 0; i < 3; ++i) line.MoveLeft();
  line.TypeSpace();
  EXPECT_EQ(line.Text(), QString(48, u'a') + u' ');
  EXPECT_EQ(line.CursorPos(), 46);
  line.TypeSpace();
  EXPECT_EQ(line.Text().size(), 50);
}

TEST(CommandLine, OverwriteReplacesAndAppendsAtTheEnd) {
  CommandLine line;
  Type(line, QStringLiteral("abc"));
  line.ToggleOverwrite();
  EXPECT_TRUE(line.IsOverwrite());
  line.MoveLeft();
  line.MoveLeft();
  Type(line, QStringLiteral("XYZ"));
  EXPECT_EQ(line.Text(), QStringLiteral("aXYZ"));
  EXPECT_EQ(line.CursorPos(), 4);
}

TEST(CommandLine, OverwriteWorksOnAFullLine) {
  CommandLine line;
  Type(line, QString(48, u'a'));
  line.ToggleOverwrite();
  line.MoveLeft();
  Type(line, QStringLiteral("bc"));
  EXPECT_EQ(line.Text(), QString(47, u'a') + u'b');
}

TEST(CommandLine, NothingCanBeTypedWithALimitOfZero) {
  CommandLine line;
  Type(line, QStringLiteral("a"), 0);
  EXPECT_TRUE(line.Text().isEmpty());
  EXPECT_EQ(line.CursorPos(), 0);
  line.Paste(QStringLiteral("abc"), 0);
  EXPECT_TRUE(line.Text().isEmpty());
}

TEST(CommandLine, ClearLeavesTheCursorWhereItWas) {
  CommandLine line;
  Type(line, QStringLiteral("hello"));
  line.Empty();
  EXPECT_TRUE(line.Text().isEmpty());
  EXPECT_EQ(line.CursorPos(), 5);
  line.ToggleOverwrite();
  Type(line, QStringLiteral("x"));
  EXPECT_EQ(line.Text(), QStringLiteral("x"));
  EXPECT_EQ(line.CursorPos(), 6);
}

TEST(CommandLine, InsertingBeyondTheEndAddsNoBlanks) {
  CommandLine line;
  Type(line, QStringLiteral("hello"));
  line.Empty();
  Type(line, QStringLiteral("ab"));
  EXPECT_EQ(line.Text(), QStringLiteral("ab"));
  EXPECT_EQ(line.CursorPos(), 7);
}

TEST(CommandLine, AfterClearOfAFullLineTheCursorMustComeBackFirst) {
  CommandLine line;
  Type(line, QString(48, u'a'));
  line.Empty();
  Type(line, QStringLiteral("x"));
  EXPECT_TRUE(line.Text().isEmpty());
  line.MoveLeft();
  Type(line, QStringLiteral("x"));
  EXPECT_EQ(line.Text(), QStringLiteral("x"));
}

TEST(CommandLine, DeleteTakesTheCharacterAtTheCursor) {
  CommandLine line;
  Type(line, QStringLiteral("abc"));
  line.DeleteAtCursor();
  EXPECT_EQ(line.Text(), QStringLiteral("abc"));
  line.MoveLeft();
  line.MoveLeft();
  line.DeleteAtCursor();
  EXPECT_EQ(line.Text(), QStringLiteral("ac"));
  EXPECT_EQ(line.CursorPos(), 1);
}

TEST(CommandLine, BackspaceTakesTheCharacterBeforeTheCursor) {
  CommandLine line;
  line.Backspace();
  EXPECT_EQ(line.CursorPos(), 0);
  Type(line, QStringLiteral("abc"));
  line.MoveLeft();
  line.Backspace();
  EXPECT_EQ(line.Text(), QStringLiteral("ac"));
  EXPECT_EQ(line.CursorPos(), 1);
  line.Backspace();
  line.Backspace();
  EXPECT_EQ(line.Text(), QStringLiteral("c"));
  EXPECT_EQ(line.CursorPos(), 0);
}

TEST(CommandLine, BackspaceOnAnEmptyTextLeavesTheCursor) {
  CommandLine line;
  Type(line, QStringLiteral("abc"));
  line.Empty();
  line.Backspace();
  EXPECT_EQ(line.CursorPos(), 3);
}

TEST(CommandLine, TheCursorStaysBetweenStartAndEnd) {
  CommandLine line;
  Type(line, QStringLiteral("ab"));
  line.MoveRight(kLimit);
  EXPECT_EQ(line.CursorPos(), 2);
  for (int i = 0; i < 3; ++i) line.MoveLeft();
  EXPECT_EQ(line.CursorPos(), 0);
  line.MoveRight(kLimit);
  EXPECT_EQ(line.CursorPos(), 1);
}

TEST(CommandLine, TheCursorDoesNotPassTheLimit) {
  CommandLine line;
  line.LoadStored(QString(60, u'm'), false);
  while (line.CursorPos() > 40) line.MoveLeft();
  for (int i = 0; i < 60; ++i) line.MoveRight(kLimit);
  EXPECT_EQ(line.CursorPos(), 48);
}

TEST(CommandLine, AStoredCommandReplacesOrIsAppended) {
  CommandLine line;
  Type(line, QStringLiteral("old"));
  line.LoadStored(QStringLiteral("mem2"), true);
  EXPECT_EQ(line.Text(), QStringLiteral("oldmem2"));
  EXPECT_EQ(line.CursorPos(), 7);
  line.LoadStored(QStringLiteral("new"), false);
  EXPECT_EQ(line.Text(), QStringLiteral("new"));
  EXPECT_EQ(line.CursorPos(), 3);
}

TEST(CommandLine, RecallBringsTheLastCommandBack) {
  CommandLine line;
  line.SetLastCommand(QStringLiteral("id"));
  Type(line, QStringLiteral("something"));
  line.RecallLast();
  EXPECT_EQ(line.Text(), QStringLiteral("id"));
  EXPECT_EQ(line.CursorPos(), 2);
}

TEST(CommandLine, PasteTakesPrintableAsciiUpToTheLimit) {
  CommandLine line;
  Type(line, QStringLiteral("old"));
  line.Paste(QStringLiteral("a\tb\r\nc µ ~\x7f"), kLimit);
  EXPECT_EQ(line.Text(), QStringLiteral("abc  ~"));
  EXPECT_EQ(line.CursorPos(), 6);
  line.Paste(QString(100, u'x') + u'y', kLimit);
  EXPECT_EQ(line.Text(), QString(48, u'x'));
  EXPECT_EQ(line.CursorPos(), 48);
  line.Paste(QString(), kLimit);
  EXPECT_TRUE(line.Text().isEmpty());
}

TEST(CommandLine, ResetEmptiesTextAndCursor) {
  CommandLine line;
  Type(line, QStringLiteral("abc"));
  line.Reset();
  EXPECT_TRUE(line.Text().isEmpty());
  EXPECT_EQ(line.CursorPos(), 0);
}

TEST(CommandLine, TheCursorBlinksEveryFiveTicks) {
  CommandLine line;
  Type(line, QStringLiteral("ab"));
  EXPECT_EQ(line.DisplayText(), QStringLiteral("ab|"));
  for (int i = 0; i < 4; ++i) EXPECT_FALSE(line.Tick());
  EXPECT_TRUE(line.Tick());
  EXPECT_EQ(line.DisplayText(), QStringLiteral("ab"));
  for (int i = 0; i < 4; ++i) EXPECT_FALSE(line.Tick());
  EXPECT_TRUE(line.Tick());
  EXPECT_EQ(line.DisplayText(), QStringLiteral("ab|"));
}

TEST(CommandLine, TicksThatWereSleptOverCountForTheBlink) {
  CommandLine line;
  EXPECT_EQ(line.TicksToBlink(), 5);
  EXPECT_FALSE(line.Tick(3));
  EXPECT_EQ(line.TicksToBlink(), 2);
  EXPECT_TRUE(line.Tick(2));
  EXPECT_EQ(line.TicksToBlink(), 5);
  // Any number of them is one blink.
  EXPECT_TRUE(line.Tick(50));
  EXPECT_EQ(line.DisplayText(), QStringLiteral("|"));
}

TEST(CommandLine, TheCursorReplacesTheCharacterUnderIt) {
  CommandLine line;
  Type(line, QStringLiteral("abc"));
  line.MoveLeft();
  line.MoveLeft();
  EXPECT_EQ(line.DisplayText(), QStringLiteral("a|c"));
  EXPECT_EQ(line.Text(), QStringLiteral("abc"));
}

}  // namespace
}  // namespace quarn
