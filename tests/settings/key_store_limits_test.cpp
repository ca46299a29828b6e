#include "base/bounds.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

// Each limit at its last length and one beyond. The child process of a death test uses the same folder, so
// the test compares the bytes that it left.
namespace quarn {
namespace {

using KeyStoreLimits = SettingsFileTest;
using KeyStoreLimitsDeathTest = SettingsFileTest;

QString Filled(qsizetype count) { return QString(count, u'x'); }

/// A file of exactly this many characters with one MEM0 line, two of them in front of it.
QByteArray FileOf(qsizetype characters, const QByteArray& value) {
  QByteArray bytes = "a\nMEM0=" + value + "\n";
  while (characters - bytes.size() > 256) bytes += QByteArray(255, '#') + "\n";
  return bytes + QByteArray(characters - bytes.size(), '#');
}

TEST_F(KeyStoreLimits, SearchesAFileOf16383CharactersAndNoMore) {
  EXPECT_EQ(ReadValue(WithBytes(FileOf(16383, "v")), keys::kMem[0]), QStringLiteral("v"));
  EXPECT_EQ(ReadValue(WithBytes(FileOf(16384, "v")), keys::kMem[0]), std::nullopt);
  EXPECT_EQ(ReadValue(WithBytes(FileOf(2000000, "v")), keys::kMem[0]), std::nullopt);
}

TEST_F(KeyStoreLimits, CountsCharactersAndNotBytes) {
  // Three bytes for each character and two for each line end: far more than 16384 bytes.
  const QByteArray euros = QByteArray("\xE2\x82\xAC").repeated(255) + "\r\n";
  const QByteArray head = QByteArray(kBom) + "MEM0=v\r\n";
  const QByteArray body = head + euros.repeated(63);  // 7 + 63 * 256 characters
  const QByteArray tail = QByteArray("\xE2\x82\xAC").repeated(16383 - 7 - 63 * 256);
  EXPECT_EQ(ReadValue(WithBytes(body + tail), keys::kMem[0]), QStringLiteral("v"));
  EXPECT_EQ(ReadValue(WithBytes(body + tail + "\r\n"), keys::kMem[0]), std::nullopt);
  // Above U+FFFF a character counts twice.
  const QByteArray astral = QByteArray("\xF0\x9F\x98\x80").repeated(8188);  // 7 + 16376 characters
  EXPECT_EQ(ReadValue(WithBytes(head + astral), keys::kMem[0]), QStringLiteral("v"));
  EXPECT_EQ(ReadValue(WithBytes(head + astral + "x"), keys::kMem[0]), std::nullopt);
}

TEST_F(KeyStoreLimits, UpdatesAFileOf16383CharactersAndNoMore) {
  const QByteArray fits = FileOf(16383, "v");
  EXPECT_TRUE(UpdateValue(WithBytes(fits), keys::kMem[0], QStringLiteral("w")));
  EXPECT_EQ(ReadWholeText(Path()), QString::fromLatin1(FileOf(16383, "w")));
  for (const qsizetype length : {16384, 100000}) {
    const QByteArray bytes = FileOf(length, "v");
    EXPECT_FALSE(UpdateValue(WithBytes(bytes), keys::kMem[0], QStringLiteral("w")));
    EXPECT_EQ(BytesOf(Path()), bytes);
  }
}

TEST_F(KeyStoreLimitsDeathTest, AnUpdatedTextHas16383CharactersAtMost) {
  const QByteArray bytes = FileOf(16380, "");
  const QString path = WithBytes(bytes);
  EXPECT_DEATH(UpdateValue(path, keys::kMem[0], QStringLiteral("four")),
               "^quarn: bounds error: updated text of 16384 characters, at most 16383 fit: .*Quarn.ini\n$");
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_EQ(FilesInFolder(), QStringList{QStringLiteral("Quarn.ini")});
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("abc")));
  EXPECT_EQ(ReadWholeText(path), QString::fromLatin1(FileOf(16383, "abc")));
}

TEST_F(KeyStoreLimitsDeathTest, ALineFeedGivenToTheLastLineCounts) {
  const QByteArray bytes = FileOf(16000, "") + "\nMEM1=";
  const QString path = WithBytes(bytes);
  const qsizetype room = 16383 - bytes.size() - 1;
  EXPECT_DEATH(UpdateValue(path, keys::kMem[1], Filled(room + 1)), "updated text of 16384");
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_TRUE(UpdateValue(path, keys::kMem[1], Filled(room)));
}

TEST_F(KeyStoreLimitsDeathTest, AValueHas1023CharactersAtMost) {
  EXPECT_EQ(ReadValue(WithBytes("MEM0=" + QByteArray(1023, 'x') + "\n"), keys::kMem[0]), Filled(1023));
  const QByteArray bytes = "MEM1=fine\nMEM0=" + QByteArray(1024, 'x') + "\n";
  const QString path = WithBytes(bytes);
  EXPECT_DEATH((void)ReadValue(path, keys::kMem[0]),
               "^quarn: bounds error: value of 1024 characters, at most 1023 fit: line 2 of .*Quarn.ini\n$");
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_EQ(ReadValue(path, keys::kMem[1]), QStringLiteral("fine"));
}

TEST_F(KeyStoreLimitsDeathTest, AValueTooLongEndsALoadToo) {
  EXPECT_TRUE(WriteDefaultFile(Path()));
  EXPECT_TRUE(UpdateValue(Path(), keys::kMem[9], Filled(1024)));
  const QByteArray bytes = BytesOf(Path());
  SettingsRecord record;
  EXPECT_DEATH((void)LoadSettings(Path(), record), "value of 1024");
  EXPECT_EQ(BytesOf(Path()), bytes);
}

TEST_F(KeyStoreLimitsDeathTest, ASplitLineHas1023CharactersAtMost) {
  QStringList entries;
  EXPECT_EQ(ListEntries(WithBytes(".BEGIN\n" + QByteArray(1023, 'x') + "\n.END\n"), entries), 1);
  const QByteArray bytes = ".BEGIN\nA=1\n.END\n" + QByteArray(1024, 'x');
  const QString path = WithBytes(bytes);
  const char* message =
      "^quarn: bounds error: line of 1024 characters, at most 1023 fit: line 4 of .*Quarn.ini\n$";
  EXPECT_DEATH(ListEntries(path, entries), message);
  EXPECT_DEATH(AddKeyLine(path, QStringLiteral("B=2")), message);
  EXPECT_DEATH(RemoveKey(path, SettingsKey(u"A=")), message);
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreLimitsDeathTest, AnAddedKeyPartHas79CharactersAtMost) {
  const QByteArray bytes = ".BEGIN\nA=1\n.END\n";
  const QString path = WithBytes(bytes);
  const char* message = "^quarn: bounds error: key part of 80 characters, at most 79 fit: .*Quarn.ini\n$";
  EXPECT_DEATH(AddKeyLine(path, Filled(79) + QStringLiteral("=1")), message);
  EXPECT_DEATH(AddKeyLine(path, Filled(80)), message);
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_TRUE(AddKeyLine(path, Filled(78) + QStringLiteral("=1")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes({QStringLiteral("A=1"), Filled(78) + QStringLiteral("=1")}));
}

TEST_F(KeyStoreLimitsDeathTest, ANormalisedTextHas16383CharactersAtMost) {
  const QByteArray bytes = ".BEGIN\n.END\n";
  const QString path = WithBytes(bytes);
  const qsizetype room = 16383 - NormalisedBytes({}).size() + 6 - 1;  // less mark, returns and its line feed
  EXPECT_DEATH(AddKeyLine(path, QStringLiteral("B=") + Filled(room - 1)), "updated text of 16384");
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("B=") + Filled(room - 2)));
  EXPECT_EQ(ReadWholeText(path)->size(), 16383);
}

TEST_F(KeyStoreLimitsDeathTest, ASaveAllThatGrowsTooLargeWritesNothing) {
  const QByteArray bytes = FileOf(16300, "") + "\nCOM_BITS=8\nMEM1=\n";
  const QString path = WithBytes(bytes);
  SettingsRecord record;
  record.comBits = QStringLiteral("7");
  record.mem[1] = Filled(1000);
  EXPECT_DEATH(SaveAllSettings(path, record), "updated text of 17");
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreLimits, WhatTheNextStartCouldNotReadDoesNotFit) {
  // In bytes: the file's own marks and line ends count, and so does each byte of a character.
  const QByteArray largest = SoundFileOfSize(16384);
  const QString path = WithBytes(largest);
  EXPECT_TRUE(UpdateFits(path, {{keys::kComPort, QStringLiteral("COM1")}}));
  EXPECT_FALSE(UpdateFits(path, {{keys::kComPort, QStringLiteral("COM12")}}));
  EXPECT_TRUE(
      UpdateFits(path, {{keys::kComPort, QStringLiteral("COM12")}, {keys::kBkColor, QStringLiteral("RED")}}));
  const QByteArray bare = QByteArray(largest).remove(0, 3).replace("\r\n", "\n") + QByteArray(33, '\n');
  EXPECT_FALSE(UpdateFits(WithBytes(bare), {{keys::kComPort, QStringLiteral("COM1")}}));
  // In characters, of which two stand for one above U+FFFF: one line with its key.
  const QString small = WithBytes(NormalisedBytes(SortedDefaults()));
  EXPECT_TRUE(UpdateFits(small, {{keys::kMem[0], Filled(1018)}}));
  EXPECT_FALSE(UpdateFits(small, {{keys::kMem[0], Filled(1019)}}));
  EXPECT_TRUE(UpdateFits(small, {{keys::kMem[0], QStringLiteral("\U0001F600").repeated(509)}}));
  EXPECT_FALSE(UpdateFits(small, {{keys::kMem[0], QStringLiteral("\U0001F600").repeated(510)}}));
  EXPECT_FALSE(UpdateFits(small, {{keys::kMem[0], QStringLiteral("a\nb")}}));
  EXPECT_EQ(BytesOf(small), NormalisedBytes(SortedDefaults()));
  // Where nothing would be written, everything fits.
  EXPECT_TRUE(UpdateFits(Path(QStringLiteral("missing")), {{keys::kMem[0], Filled(5000)}}));
  EXPECT_TRUE(UpdateFits(small, {{SettingsKey(u"NO_KEY="), Filled(5000)}}));
}

}  // namespace
}  // namespace quarn
