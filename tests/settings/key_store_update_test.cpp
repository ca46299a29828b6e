#include "settings/key_store.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

using KeyStoreUpdate = SettingsFileTest;

TEST_F(KeyStoreUpdate, ReplacesOneValueAndKeepsEverythingElse) {
  const QString path = WithBytes(
      "\xEF\xBB\xBF.VER=Old  (Ver. 0.90)\r\nstray\r\n.BEGIN\r\nZ=1\r\n\r\nCOM_PORT=COM3\r\n"
      " A = 2 \r\n.END\r\nafter\r\nno line end");
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM12")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) +
                               ".VER=Old  (Ver. 0.90)\r\nstray\r\n.BEGIN\r\nZ=1\r\n\r\nCOM_PORT=COM12\r\n"
                               " A = 2 \r\n.END\r\nafter\r\nno line end");
}

TEST_F(KeyStoreUpdate, ChangesTheFirstOfTwoEqualLinesOnly) {
  const QString path = WithBytes(".BEGIN\nCOM_PORT=COM3\nCOM_PORT=COM3\n.END\n");
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + ".BEGIN\r\nCOM_PORT=COM4\r\nCOM_PORT=COM3\r\n.END\r\n");
}

TEST_F(KeyStoreUpdate, PassesOverALineThatBeginsWithABlank) {
  const QByteArray bytes = ".BEGIN\n COM_PORT=COM3\n.END\n";
  const QString path = WithBytes(bytes);
  EXPECT_FALSE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreUpdate, LeavesAFileAloneWhoseKeyStandsAfterEnd) {
  const QByteArray bytes = ".BEGIN\nA=1\n.END\nCOM_PORT=COM3\n";
  const QString path = WithBytes(bytes);
  EXPECT_FALSE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreUpdate, NeverAddsAKey) {
  const QByteArray bytes = NormalisedBytes({QStringLiteral("A=1")});
  const QString path = WithBytes(bytes);
  EXPECT_FALSE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreUpdate, AnEmptyTextLeavesTheKeyInTheFile) {
  const QString path = WithBytes(".BEGIN\nMEM0=x\nMEM1=y\n.END\n");
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QString()));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + ".BEGIN\r\nMEM0=\r\nMEM1=y\r\n.END\r\n");
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QString());
}

TEST_F(KeyStoreUpdate, GivesALastLineItsLineFeed) {
  const QString path = WithBytes(".BEGIN\nMEM0=x");
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("y")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + ".BEGIN\r\nMEM0=y\r\n");
}

TEST_F(KeyStoreUpdate, RewritesATextWithoutTheKeyAndWithoutEndUnchanged) {
  const QString path = WithBytes(".BEGIN\nA=1\n.ENDX\nB=2");
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + ".BEGIN\r\nA=1\r\n.ENDX\r\nB=2");
}

TEST_F(KeyStoreUpdate, AnEndLineWithoutALineFeedCounts) {
  const QByteArray bytes = ".BEGIN\nA=1\n.END";
  const QString path = WithBytes(bytes);
  EXPECT_FALSE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreUpdate, NormalisesTheEncodingOfAnotherEditorsFile) {
  const QString path = WithBytes(".VER=x\n.BEGIN\nCOM_PORT=COM3\nMEM0=\xC3\xA9\n.END\n");
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(BytesOf(path),
            QByteArray(kBom) + ".VER=x\r\n.BEGIN\r\nCOM_PORT=COM3\r\nMEM0=\xC3\xA9\r\n.END\r\n");
}

TEST_F(KeyStoreUpdate, UpdatesAKeyBeforeBegin) {
  const QString path = WithBytes("COM_PORT=a\n.BEGIN\nCOM_PORT=b\n.END\n");
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("c")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + "COM_PORT=c\r\n.BEGIN\r\nCOM_PORT=b\r\n.END\r\n");
}

TEST_F(KeyStoreUpdate, WritesNothingForOneCharacterOrNone) {
  for (const QByteArray& bytes : {QByteArray(), QByteArray("x"), QByteArray(kBom) + "x"}) {
    const QString path = WithBytes(bytes);
    EXPECT_TRUE(UpdateValue(path, SettingsKey(u"x"), QStringLiteral("y")));
    EXPECT_EQ(BytesOf(path), bytes);
  }
}

TEST_F(KeyStoreUpdate, NeitherMakesAMissingFileNorTouchesAFolder) {
  EXPECT_TRUE(UpdateValue(Path(), keys::kComPort, QStringLiteral("COM4")));
  EXPECT_TRUE(UpdateValue(Path(QString()), keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(FilesInFolder(), QStringList());
}

TEST_F(KeyStoreUpdate, LeavesAFileAloneThatIsNotUtf8) {
  const QByteArray bytes = ".BEGIN\nCOM_PORT=COM3\nMEM0=\xE9t\xE9\n.END\n";
  const QString path = WithBytes(bytes);
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM4")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreUpdate, CarriesEveryCharacterThereAndBack) {
  const QString path = WithBytes(".BEGIN\nMEM0=\nMEM1=keep\n.END\n");
  for (const QString& value :
       {QStringLiteral("\u00E9\u20AC\U0001F600\U0010FFFF"), QStringLiteral("\uFFFD\uFEFF"),
        QStringLiteral(" = .END \t"), QStringLiteral("ends in a return\r"), QString(u'\0') + u'\u001A'}) {
    EXPECT_TRUE(UpdateValue(path, keys::kMem[0], value));
    EXPECT_EQ(ReadValue(path, keys::kMem[0]), value);
    EXPECT_EQ(ReadValue(path, keys::kMem[1]), QStringLiteral("keep"));
  }
}

TEST_F(KeyStoreUpdate, LeavesNoFileBeside) {
  const QString path = WithBytes(".BEGIN\nMEM0=\n.END\n");
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("x")));
  EXPECT_EQ(FilesInFolder(), QStringList{QStringLiteral("Quarn.ini")});
}

TEST_F(KeyStoreUpdate, HandlesLinesOf260To1023Characters) {
  const QByteArray longValue(1023, 'v');
  const QString path = WithBytes(".BEGIN\nX=" + longValue + "\nMEM0=" + longValue + "\n.END\n");
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QString::fromLatin1(longValue));
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("short")));
  EXPECT_EQ(BytesOf(path), QByteArray(kBom) + ".BEGIN\r\nX=" + longValue + "\r\nMEM0=short\r\n.END\r\n");
}

}  // namespace
}  // namespace quarn
