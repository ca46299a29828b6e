#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

// Whole files: from earlier versions, from other editors, cut short, or malicious.
namespace quarn {
namespace {

struct FileCase {
  const char* name;
  LoadResult loaded;
  int entries;
};

void PrintTo(const FileCase& file, std::ostream* out) { *out << file.name; }

class KeyStoreFixtures : public SettingsFileTest, public testing::WithParamInterface<FileCase> {};

TEST_P(KeyStoreFixtures, LoadsAndListsWithoutTouchingTheFile) {
  const QString path = WithFixture(QString::fromLatin1(GetParam().name));
  const QByteArray bytes = BytesOf(path);
  SettingsRecord before;
  before.autoClr = QStringLiteral("kept");
  SettingsRecord record = before;
  QStringList entries;
  EXPECT_EQ(LoadSettings(path, record), GetParam().loaded);
  EXPECT_EQ(record == before, GetParam().loaded != LoadResult::Loaded);
  EXPECT_EQ(ListEntries(path, entries), GetParam().entries);
  EXPECT_EQ(BytesOf(path), bytes);
}

INSTANTIATE_TEST_SUITE_P(Files, KeyStoreFixtures,
                         testing::Values(FileCase{"current.qrn", LoadResult::Loaded, 29},
                                         FileCase{"old_order_and_version.qrn", LoadResult::Loaded, 29},
                                         FileCase{"old_keys.ini", LoadResult::Loaded, 29},
                                         FileCase{"foreign_editor.qrn", LoadResult::Loaded, 29},
                                         FileCase{"foreign_carriage_returns.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"foreign_utf16.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"foreign_latin1.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"non_ascii.qrn", LoadResult::Loaded, 29},
                                         FileCase{"broken_empty.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"broken_no_begin.qrn", LoadResult::Loaded, 2},
                                         FileCase{"broken_no_end.qrn", LoadResult::Loaded, 2},
                                         FileCase{"broken_end_first.qrn", LoadResult::Incomplete, 0},
                                         FileCase{"broken_cut_in_a_character.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"broken_mem3_empty.qrn", LoadResult::Loaded, 29},
                                         FileCase{"broken_delimiter_empty.qrn", LoadResult::Incomplete, 29},
                                         FileCase{"broken_port_twice.qrn", LoadResult::Loaded, 30},
                                         FileCase{"broken_port_after_end.qrn", LoadResult::Incomplete, 28},
                                         FileCase{"broken_blank_before_port.qrn", LoadResult::Incomplete, 29},
                                         FileCase{"hostile_many_lines.qrn", LoadResult::Incomplete, 2},
                                         FileCase{"hostile_oversize.qrn", LoadResult::Incomplete, 29},
                                         FileCase{"hostile_nul.qrn", LoadResult::Loaded, 29}));

using KeyStoreFixtureFiles = SettingsFileTest;

TEST_F(KeyStoreFixtureFiles, WhatIsBrokenInOneWayLacksNoKey) {
  for (const char* name : {"broken_delimiter_empty.qrn", "broken_port_after_end.qrn",
                           "broken_blank_before_port.qrn", "hostile_oversize.qrn", "old_keys.ini"}) {
    const QByteArray bytes = BytesOf(WithFixture(QString::fromLatin1(name)));
    for (const Setting* setting : SettingsInLoadOrder()) {
      EXPECT_TRUE(bytes.contains(setting->key.Text().toUtf8()))
          << name << " is refused for want of " << setting->key.Text().toString().toStdString();
    }
  }
}

TEST_F(KeyStoreFixtureFiles, AnotherEditorsFileIsNormalisedByItsFirstUpdate) {
  const QString path = WithFixture(QStringLiteral("foreign_editor.qrn"));
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("NONE")));
  EXPECT_EQ(BytesOf(path), NormalisedBytes(SortedDefaults()));
}

TEST_F(KeyStoreFixtureFiles, AnOldFileIsBroughtUpToDateKeyByKey) {
  const QString path = WithFixture(QStringLiteral("old_keys.ini"));
  EXPECT_TRUE(RemoveKey(path, SettingsKey(u"OLD_KEY=")));
  EXPECT_TRUE(AddKeyLine(path, QStringLiteral("MARK_COLOR=WHITE")));
  QStringList expected = SortedDefaults();
  expected.replaceInStrings(QStringLiteral("COM_PORT=NONE"), QStringLiteral("COM_PORT=COM7"));
  EXPECT_EQ(BytesOf(path), NormalisedBytes(expected));
}

TEST_F(KeyStoreFixtureFiles, AnUpdateKeepsAnOldFilesVersionAndOrder) {
  const QString path = WithFixture(QStringLiteral("old_order_and_version.qrn"));
  QByteArray expected = BytesOf(path);
  expected.replace("COM_PORT=COM3", "COM_PORT=COM8");
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM8")));
  EXPECT_EQ(BytesOf(path), expected);
  EXPECT_TRUE(expected.startsWith("\xEF\xBB\xBF.VER=Quarn  (Ver. 0.90)\r\n.BEGIN\r\nSTART_DISP=ON\r\n"));
}

TEST_F(KeyStoreFixtureFiles, OtherCharactersSurviveAnUpdateNextToThem) {
  const QString path = WithFixture(QStringLiteral("non_ascii.qrn"));
  const QByteArray bytes = BytesOf(path);
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QStringLiteral("Gr\u00F6\u00DFe? \u6E29\u5EA6 \U0001F600"));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("NONE")));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreFixtureFiles, NoFileThatIsNotUtf8IsEverRewritten) {
  for (const char* name : {"foreign_utf16.qrn", "foreign_latin1.qrn", "broken_cut_in_a_character.qrn"}) {
    const QString path = WithFixture(QString::fromLatin1(name));
    const QByteArray bytes = BytesOf(path);
    EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
    EXPECT_FALSE(AddKeyLine(path, QStringLiteral("NEW=1")));
    EXPECT_FALSE(RemoveKey(path, keys::kComPort));
    EXPECT_EQ(BytesOf(path), bytes) << name;
  }
}

TEST_F(KeyStoreFixtureFiles, OfTwoPortLinesTheFirstIsReadAndUpdated) {
  const QString path = WithFixture(QStringLiteral("broken_port_twice.qrn"));
  QByteArray expected = BytesOf(path);
  expected.replace("COM_PORT=COM3", "COM_PORT=COM9");
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM9")));
  EXPECT_EQ(BytesOf(path), expected);
}

TEST_F(KeyStoreFixtureFiles, ANulIsACharacterLikeAnother) {
  const QString path = WithFixture(QStringLiteral("hostile_nul.qrn"));
  const QByteArray bytes = BytesOf(path);
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QStringLiteral("a") + QChar(u'\0') + QStringLiteral("b"));
  EXPECT_TRUE(UpdateValue(path, keys::kMem[1], QStringLiteral("function-2")));
  EXPECT_EQ(BytesOf(path), bytes);
}

using KeyStoreFixtureFilesDeathTest = SettingsFileTest;

TEST_F(KeyStoreFixtureFilesDeathTest, HostileLengthsEndTheProgramAndLeaveTheFile) {
  SettingsRecord record;
  QStringList entries;
  const QString value = WithFixture(QStringLiteral("hostile_long_value.qrn"));
  const QByteArray valueBytes = BytesOf(value);
  EXPECT_DEATH((void)LoadSettings(value, record), "value of 1024 characters, at most 1023 fit");
  EXPECT_EQ(BytesOf(value), valueBytes);
  const QString line = WithFixture(QStringLiteral("hostile_long_line.qrn"));
  const QByteArray lineBytes = BytesOf(line);
  EXPECT_DEATH(ListEntries(line, entries), "line of 1024 characters, at most 1023 fit");
  EXPECT_EQ(BytesOf(line), lineBytes);
}

}  // namespace
}  // namespace quarn
