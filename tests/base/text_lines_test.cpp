#include "base/text_lines.h"

#include <clocale>

#include "settings/settings_test_support.h"

namespace quarn {
namespace {

QString Filled(qsizetype count) { return QString(count, u'x'); }

TEST(SplitTextLines, DropsTheTerminatorsAndKeepsEmptyLines) {
  EXPECT_EQ(SplitTextLines(u"a\n\nb\n"), (QStringList{QStringLiteral("a"), QString(), QStringLiteral("b")}));
}

TEST(SplitTextLines, TakesWhatFollowsTheLastTerminatorAsALine) {
  EXPECT_EQ(SplitTextLines(u"a\nb"), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
  EXPECT_EQ(SplitTextLines(u"\n"), QStringList{QString()});
  EXPECT_EQ(SplitTextLines(u""), QStringList());
}

TEST(SplitTextLines, CutsAtTheTerminatorAskedFor) {
  EXPECT_EQ(SplitTextLines(u"a\rb\nc\r", u'\r'), (QStringList{QStringLiteral("a"), QStringLiteral("b\nc")}));
}

TEST(SplitTextLines, SeesTheFirst1024LinesOnly) {
  EXPECT_EQ(SplitTextLines(QString(1024, u'\n')).size(), 1024);
  const QStringList lines = SplitTextLines(QString(1023, u'\n') + QStringLiteral("last\nhidden\n"));
  ASSERT_EQ(lines.size(), 1024);
  EXPECT_EQ(lines.last(), QStringLiteral("last"));
}

TEST(SplitTextLines, SplitsATextOfAnyLength) {
  const QString text = QString(Filled(1000) + u'\n').repeated(40);
  EXPECT_EQ(SplitTextLines(text + QStringLiteral("last")),
            QStringList(40, Filled(1000)) + QStringList{QStringLiteral("last")});
}

TEST(SplitTextLinesDeathTest, ALineOf1023CharactersIsTheLongest) {
  EXPECT_EQ(SplitTextLines(Filled(1023)), QStringList{Filled(1023)});
  EXPECT_EQ(SplitTextLines(Filled(1023) + u'\n'), QStringList{Filled(1023)});
  EXPECT_DEATH((void)SplitTextLines(Filled(1024)),
               "^quarn: bounds error: line of 1024 .*at most 1023 fit\n$");
  EXPECT_DEATH((void)SplitTextLines(QStringLiteral("a\n") + Filled(1024) + u'\n'), "line of 1024");
}

TEST(SplitTextLines, NeverReachesALongLineBeyondThe1024th) {
  EXPECT_EQ(SplitTextLines(QString(1024, u'\n') + Filled(1024)).size(), 1024);
}

TEST(SortTextList, PutsCapitalsBeforeUnderscoreBeforeSmallLetters) {
  QStringList list{QStringLiteral("a"), QStringLiteral("_"),  QStringLiteral("Z"),
                   QStringLiteral("0"), QStringLiteral("AB"), QStringLiteral("A")};
  SortTextList(list);
  EXPECT_EQ(list, (QStringList{QStringLiteral("0"), QStringLiteral("A"), QStringLiteral("AB"),
                               QStringLiteral("Z"), QStringLiteral("_"), QStringLiteral("a")}));
}

TEST(SortTextList, OrdersByCodeUnitAndNotByCodePoint) {
  // A surrogate pair's first half is below U+FFFD, though its character is above.
  const QString astral = QStringLiteral("\U0001F600");
  const QString high = QStringLiteral("\uFFFD");
  QStringList list{high, astral, QStringLiteral("\u00E9"), QStringLiteral("z")};
  SortTextList(list);
  EXPECT_EQ(list, (QStringList{QStringLiteral("z"), QStringLiteral("\u00E9"), astral, high}));
}

TEST(SortTextList, DropsEmptyEntriesAndKeepsDuplicates) {
  QStringList list{QString(), QStringLiteral("b"), QStringLiteral(""), QStringLiteral("a"),
                   QStringLiteral("b")};
  SortTextList(list);
  EXPECT_EQ(list, (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("b")}));
  QStringList empties{QString(), QString()};
  SortTextList(empties);
  EXPECT_TRUE(empties.isEmpty());
}

TEST(SortTextList, LeavesAListOfMoreThan1024EntriesAlone) {
  QStringList fits(1024, QStringLiteral("b"));
  fits.first() = QString();
  fits.last() = QStringLiteral("a");
  QStringList tooMany = fits;
  tooMany.prepend(QStringLiteral("c"));
  const QStringList before = tooMany;
  SortTextList(fits);
  EXPECT_EQ(fits.first(), QStringLiteral("a"));
  EXPECT_EQ(fits.size(), 1023);
  SortTextList(tooMany);
  EXPECT_EQ(tooMany, before);
}

}  // namespace
}  // namespace quarn
