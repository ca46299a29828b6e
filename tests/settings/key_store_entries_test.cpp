#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

class KeyStoreEntries : public SettingsFileTest {
 protected:
  int List(const QByteArray& bytes) { return ListEntries(WithBytes(bytes), m_entries); }

  QStringList m_entries{QStringLiteral("left over")};
};

TEST_F(KeyStoreEntries, ListsTheLinesBetweenBeginAndEndInFileOrder) {
  EXPECT_EQ(List(".VER=1\nstray=0\n.BEGIN\nZ=1\n\n A=2\nno equals\n.END\nafter=1\n"), 4);
  EXPECT_EQ(m_entries, (QStringList{QStringLiteral("Z=1"), QString(), QStringLiteral(" A=2"),
                                    QStringLiteral("no equals")}));
}

TEST_F(KeyStoreEntries, ListsNoneWhereNothingStandsBetween) {
  EXPECT_EQ(List(".BEGIN\n.END\n"), 0);
  EXPECT_EQ(m_entries, QStringList());
}

TEST_F(KeyStoreEntries, RefusesAPathThatIsNoFile) {
  EXPECT_EQ(ListEntries(Path(QStringLiteral("missing")), m_entries), -1);
  EXPECT_EQ(m_entries, QStringList());
  EXPECT_EQ(ListEntries(Path(QString()), m_entries), -1);
}

TEST_F(KeyStoreEntries, CallsAFileWithoutBeginOrEndAFormatError) {
  for (const char* bytes : {"", "\xEF\xBB\xBF", "\n", ".BEGIN\nA=1\nB=2\nC=3\n", "A=1\nB=2\nC=3\n.END\n",
                            ".begin\nA=1\n.end\n", " .BEGIN\nA=1\n .END\n", ".BEGI\nA=1\n.EN\n"}) {
    m_entries = {QStringLiteral("left over")};
    EXPECT_EQ(List(bytes), 2) << bytes;
    EXPECT_EQ(m_entries, QStringList()) << bytes;
  }
}

TEST_F(KeyStoreEntries, TwoEntriesGiveTheSameNumberAsAFormatError) {
  EXPECT_EQ(List(".BEGIN\nA=1\nB=2\n.END\n"), 2);
  EXPECT_EQ(m_entries, (QStringList{QStringLiteral("A=1"), QStringLiteral("B=2")}));
}

TEST_F(KeyStoreEntries, KnowsBothLinesByHowTheyBegin) {
  EXPECT_EQ(List(".BEGINNING\nA=1\n.ENDX\nB=2\n.END\n"), 1);
  EXPECT_EQ(m_entries, QStringList{QStringLiteral("A=1")});
}

TEST_F(KeyStoreEntries, TakesTheFirstBeginAndTheFirstEndFromTheTop) {
  EXPECT_EQ(List(".BEGIN\nA=1\n.BEGIN\nB=2\n.END\nC=3\n.END\n"), 3);
  EXPECT_EQ(m_entries, (QStringList{QStringLiteral("A=1"), QStringLiteral(".BEGIN"), QStringLiteral("B=2")}));
}

TEST_F(KeyStoreEntries, ListsNoneWhenEndComesFirst) {
  EXPECT_EQ(List(".END\n.BEGIN\nA=1\nB=2\nC=3\n.END\n"), 0);
  EXPECT_EQ(m_entries, QStringList());
  EXPECT_EQ(List(".END\nX\nY\n.BEGIN\nA=1\n"), 0);
}

TEST_F(KeyStoreEntries, SeesNoLineInAFileOfCarriageReturnsOnly) {
  EXPECT_EQ(List(".BEGIN\rA=1\rB=2\rC=3\r.END\r"), 2);
}

TEST_F(KeyStoreEntries, ALastLineNeedsNoLineFeed) { EXPECT_EQ(List(".BEGIN\nA=1\n.END"), 1); }

TEST_F(KeyStoreEntries, SeesTheFirst1024LinesOnly) {
  const QByteArray entries = QByteArray("A=1\n").repeated(1022);
  EXPECT_EQ(List(".BEGIN\n" + entries + ".END\n"), 1022);
  EXPECT_EQ(List(".BEGIN\n" + entries + "A=1\n.END\n"), 2);
}

TEST_F(KeyStoreEntries, SeesEveryLineOfTheLongestText) {
  const QByteArray filler = "A=" + QByteArray(998, 'x') + "\n";
  for (const int lines : {8, 9, 16}) {
    QByteArray bytes = ".BEGIN\n" + filler.repeated(lines) + "B=";
    if (lines == 16) bytes += QByteArray(16383 - bytes.size() - 6, 'y');
    EXPECT_EQ(List(bytes + "\n.END\n"), lines + 1) << lines;
    EXPECT_TRUE(m_entries.last().startsWith(QStringLiteral("B=")));
  }
  // Text after the longest length is not read.
  EXPECT_EQ(List(".BEGIN\n" + filler.repeated(17) + ".END\n"), 2);
  EXPECT_EQ(List(".BEGIN\nA=1\n.END\n" + QByteArray(20000, '\n')), 1);
}

TEST_F(KeyStoreEntries, ListsBytesThatAreFewerCharacters) {
  // The limit counts characters, whatever their size in the file.
  const QByteArray euros = "A=" + QByteArray("\xE2\x82\xAC").repeated(1000) + "\r\n";
  EXPECT_EQ(List(".BEGIN\r\n" + euros.repeated(5) + "B=1\r\n.END\r\n"), 6);
}

TEST_F(KeyStoreEntries, CallsAFileThatIsNotUtf8AFormatError) {
  EXPECT_EQ(List(".BEGIN\nA=\xFF\n.END\n"), 2);
  EXPECT_EQ(m_entries, QStringList());
}

TEST_F(KeyStoreEntries, WritesAFreshFileInTheNormalisedLayout) {
  EXPECT_TRUE(WriteDefaultFile(Path()));
  EXPECT_EQ(BytesOf(Path()), NormalisedBytes(SortedDefaults()));
  EXPECT_EQ(ListEntries(Path(), m_entries), 29);
}

TEST_F(KeyStoreEntries, AFreshFileReplacesWhateverWasThere) {
  WithBytes(QByteArray(30000, '\xFF'));
  EXPECT_TRUE(WriteDefaultFile(Path()));
  EXPECT_EQ(BytesOf(Path()), NormalisedBytes(SortedDefaults()));
}

TEST_F(KeyStoreEntries, WritesNoFreshFileOverAFolder) {
  EXPECT_FALSE(WriteDefaultFile(Path(QString())));
  EXPECT_EQ(FilesInFolder(), QStringList());
  EXPECT_FALSE(WriteDefaultFile(Path(QStringLiteral("no/such/folder/Quarn.ini"))));
}

TEST_F(KeyStoreEntries, AddsALineAndNormalises) {
  const QString path = WithBytes(".VER=Old\nstray\n.BEGIN\nb=2\n\nA=1\n.END\nafter\n");
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("MARK_COLOR=WHITE")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes({QStringLiteral("A=1"), QStringLiteral("MARK_COLOR=WHITE"),
                                            QStringLiteral("b=2")}));
}

TEST_F(KeyStoreEntries, AddsNothingWhoseKeyOccursAnywhere) {
  for (const char* text : {".BEGIN\nA=1\n.END\n", ".BEGIN\nXA=1\n.END\n", ".BEGIN\nB=A=\n.END\n",
                           "A=1\n.BEGIN\n.END\n", ".BEGIN\n.END\nA="}) {
    const QString path = WithBytes(text);
    EXPECT_FALSE(AddKeyLine(path, QStringLiteral("A=2"))) << text;
    EXPECT_EQ(BytesOf(path), text);
  }
  EXPECT_TRUE(AddKeyLine(WithBytes(".BEGIN\na=1\nA 1\n.END\n"), QStringLiteral("A=2")));
}

TEST_F(KeyStoreEntries, TakesTheKeyPartUpToTheFirstEqualsSign) {
  const QString path = WithBytes(".BEGIN\nA=x\n.END\n");
  EXPECT_FALSE(AddKeyLine(path, QStringLiteral("A=y=z")));
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("B=y=z")));
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("whole")));
  EXPECT_FALSE(AddKeyLine(path, QStringLiteral("who")));
  EXPECT_EQ(BytesOf(path),
            NormalisedBytes({QStringLiteral("A=x"), QStringLiteral("B=y=z"), QStringLiteral("whole")}));
}

TEST_F(KeyStoreEntries, AddsToAFileOfTwoEntries) {
  const QString path = WithBytes(".BEGIN\nA=1\nB=2\n.END\n");
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("C=3")));
  EXPECT_EQ(BytesOf(path),
            NormalisedBytes({QStringLiteral("A=1"), QStringLiteral("B=2"), QStringLiteral("C=3")}));
}

TEST_F(KeyStoreEntries, RemovesEveryEntryThatBeginsWithTheKey) {
  const QString path =
      WithBytes(".VER=Old\nOLD_KEY=0\n.BEGIN\nb=2\nOLD_KEY=1\n\nOLD_KEY=2\nOLD_KEYS=3\n OLD_KEY=4\n.END\n");
  EXPECT_TRUE(RemoveKey(path, SettingsKey(u"OLD_KEY=")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes({QStringLiteral(" OLD_KEY=4"), QStringLiteral("OLD_KEYS=3"),
                                            QStringLiteral("b=2")}));
}

TEST_F(KeyStoreEntries, NormalisesEvenWhereThereIsNothingToRemove) {
  const QString path = WithBytes(".BEGIN\nB=2\nA=1\n.END\n");
  EXPECT_TRUE(RemoveKey(path, SettingsKey(u"C=")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes({QStringLiteral("A=1"), QStringLiteral("B=2")}));
}

TEST_F(KeyStoreEntries, AnEmptyKeyRemovesBlankLinesAndNoSetting) {
  const QString path = WithBytes(".BEGIN\nB=2\n\nA=1\n.END\n");
  EXPECT_TRUE(RemoveKey(path, SettingsKey(u"")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes({QStringLiteral("A=1"), QStringLiteral("B=2")}));
}

TEST_F(KeyStoreEntries, LeavesAFileAloneWhoseEntriesCannotBeListed) {
  const QByteArray hiddenEnd = ".BEGIN\n" + QByteArray("A=1\n").repeated(1023) + ".END\n";
  const QByteArray tooLong = ".BEGIN\nA=1\n" + QByteArray(16383, '\n') + ".END\n";
  for (const QByteArray& bytes :
       {QByteArray(), QByteArray("A=1\n"), QByteArray(".BEGIN\nA=1\n"), QByteArray("A=1\n.END\n"),
        QByteArray(".BEGIN\nA=\xFF\n.END\n"), hiddenEnd, tooLong}) {
    const QString path = WithBytes(bytes);
    EXPECT_FALSE(AddKeyLine(path, QStringLiteral("B=2")));
    EXPECT_EQ(BytesOf(path), bytes);
    EXPECT_FALSE(RemoveKey(path, SettingsKey(u"A=")));
    EXPECT_EQ(BytesOf(path), bytes);
  }
}

TEST_F(KeyStoreEntries, AddsAndRemovesNothingWhereThereIsNoFile) {
  EXPECT_FALSE(AddKeyLine(Path(), QStringLiteral("B=2")));
  EXPECT_FALSE(RemoveKey(Path(), SettingsKey(u"B=")));
  EXPECT_FALSE(AddKeyLine(Path(QString()), QStringLiteral("B=2")));
  EXPECT_EQ(FilesInFolder(), QStringList());
}

}  // namespace
}  // namespace quarn
