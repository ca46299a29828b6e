#include "settings/user_file_test.h"

#include <QLoggingCategory>

#include "settings/damaged_file.h"
#include "settings/working_file.h"

namespace quarn::test {
namespace {

TEST_F(UserFile, AGoodFileIsCopiedByteForByteAndLoaded) {
  const QByteArray bytes = "\xEF\xBB\xBF.VER=old\n" +
                           NormalisedBytes(SortedDefaults()).mid(3).replace("COM_PORT=NONE", "COM_PORT=COM3");
  const QString user = WithBytes(bytes, QStringLiteral("user.qrn"));
  messages.whileShown = [&] {
    EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
    EXPECT_EQ(BytesOf(working), bytes);
  };
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, QStringList{kOpened});
  EXPECT_EQ(record.comPort, QStringLiteral("COM3"));
  EXPECT_EQ(BytesOf(user), bytes);
}

TEST_F(UserFile, AMissingFileAndAFolderAreNotFound) {
  ExpectRefused(Path(QStringLiteral("missing.qrn")), {kFileNotFound});
  QDir().mkdir(Path(QStringLiteral("folder.qrn")));
  ExpectRefused(Path(QStringLiteral("folder.qrn")), {kFileNotFound});
  ExpectRefused(QString(), {kFileNotFound});
}

TEST_F(UserFile, ABrokenFileIsInvalid) {
  const QList<QByteArray> broken = {QByteArray(), "garbage", ".BEGIN\nCOM_PORT=COM3\n",
                                    ".BEGIN\nA=1\nB=2\n.END\n", QByteArray(16385, 'x')};
  for (const QByteArray& bytes : broken) {
    ExpectRefused(WithBytes(bytes, QStringLiteral("user.qrn")), {kFileInvalid});
  }
}

TEST_F(UserFile, NoLeavesEverythingUntouched) {
  messages.answers = {false};
  ExpectRefused(WithEntry("MARK_COLOR=WHITE\r\n", ""), {kMayUpdate});
}

TEST_F(UserFile, YesUpdatesTheUserFileInPlaceAndLoadsIt) {
  const QString user = WithEntry("MARK_COLOR=WHITE\r\n", "OLD_KEY=1\r\n");
  messages.answers = {true};
  int shown = 0;
  messages.whileShown = [&] {
    const bool updated = CompareWithDefaults(user).result == KeySetResult::Equal;
    EXPECT_EQ(updated, shown > 0);
    EXPECT_EQ(record.comPort, shown < 2 ? QStringLiteral("COM7") : QStringLiteral("NONE"));
    ++shown;
  };
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, (QStringList{kMayUpdate, kUpdated, kOpened}));
  EXPECT_EQ(BytesOf(user), NormalisedBytes(SortedDefaults()));
  EXPECT_EQ(BytesOf(working), NormalisedBytes(SortedDefaults()));
}

TEST_F(UserFile, AnUpdatedFileThatStillLacksAKeyIsRejectedWhenItIsLoaded) {
  // A key whose text is in another key's value counts as present, and is not added.
  QByteArray bytes = NormalisedBytes(SortedDefaults());
  bytes.replace("COM_BPS=9600\r\n", "").replace("MEM1=function-2", "MEM1=COM_BPS=1");
  const QString user = WithBytes(bytes, QStringLiteral("user.qrn"));
  messages.answers = {true};
  ExpectRefused(user, {kMayUpdate, kUpdated, kNotLoaded});
}

TEST_F(UserFile, AnUpdateThatWouldBeTooLargeIsNotMade) {
  const QByteArray missing = SoundFileOfSize(16384).replace("MARK_COLOR=WHITE", "OLD=1");
  const QString user = WithBytes(missing, QStringLiteral("user.qrn"));
  messages.answers = {true};
  EXPECT_EQ(Open(user), user) << "what was removed makes room";
  EXPECT_EQ(BytesOf(user), SoundFileOfSize(16384));
  // The largest size of a file, so no line can be added.
  WithBytes(SoundFileOfSize(16384 + 18).replace("MARK_COLOR=WHITE\r\n", ""), QStringLiteral("user.qrn"));
  ASSERT_EQ(CompareWithDefaults(user).result, KeySetResult::Different);
  messages.answers = {true};
  ExpectRefused(user, {kMayUpdate, kFileInvalid});
}

TEST_F(UserFile, AFileOfTheLargestSizeLoads) {
  // Over half of it are stored commands; in characters it is far smaller than in bytes.
  for (const qsizetype size : {8192, 8193, 12000, 16383, 16384}) {
    const QString user = WithBytes(SoundFileOfSize(size), QStringLiteral("user.qrn"));
    messages.shown.clear();
    EXPECT_EQ(Open(user), user) << size;
    EXPECT_EQ(messages.shown, QStringList{kOpened});
    EXPECT_EQ(BytesOf(working), SoundFileOfSize(size));
  }
}

TEST_F(UserFile, ASoundFileThatIsOneByteTooLargeIsInvalid) {
  ExpectRefused(WithBytes(SoundFileOfSize(16385), QStringLiteral("user.qrn")), {kFileInvalid});
  ExpectRefused(WithBytes(SoundFileOfSize(25000), QStringLiteral("user.qrn")), {kFileInvalid});
}

TEST_F(UserFile, AKeyInOtherLettersIsAnotherKey) {
  const QString user = WithEntry("COM_PORT=NONE", "com_port=COM3");
  messages.answers = {true};
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, (QStringList{kMayUpdate, kUpdated, kOpened}));
  EXPECT_EQ(BytesOf(user), NormalisedBytes(SortedDefaults()));
}

TEST_F(UserFile, ABadPortIsRejectedAndTheWorkingTextComesBack) {
  for (const char* port : {"COM100", "com3", "COM/", ""}) {
    ExpectRefused(WithEntry("COM_PORT=NONE", QByteArray("COM_PORT=") + port), {kNotLoaded});
  }
}

TEST_F(UserFile, AnEmptyValueIsRejectedAndTheWorkingTextComesBack) {
  ExpectRefused(WithEntry("DELIMITER=CR", "DELIMITER="), {kNotLoaded});
}

TEST_F(UserFile, TheWorkingFileComesBackByteForByte) {
  // A foreign encoding and bytes after the last line are kept.
  const QByteArray strange = "not \xFF settings\r" + QByteArray(16000, 'x');
  WithBytes(strange);
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM100"), {kNotLoaded});
  EXPECT_EQ(BytesOf(working), strange);
  WithBytes(QByteArray());
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM100"), {kNotLoaded});
}

TEST_F(UserFile, AWorkingFileTooLargeForOneIsKeptBeside) {
  const QByteArray strange = "not settings\r" + QByteArray(40000, 'x');
  WithBytes(strange);
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, QStringList{kOpened});
  EXPECT_EQ(BytesOf(working), BytesOf(user));
  EXPECT_EQ(BytesOf(DamagedFileOf(working)), strange);
}

TEST_F(UserFile, AWorkingFileThatWasNotThereIsNotThereAgain) {
  QFile::remove(working);
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM100"), {kNotLoaded});
  EXPECT_FALSE(QFile::exists(working));
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM5");
  messages.shown.clear();
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(BytesOf(working), BytesOf(user));
  EXPECT_EQ(record.comPort, QStringLiteral("COM5"));
}

TEST_F(UserFile, AChangeMadeWhileTheQuestionIsUpOutlivesARejection) {
  const QString user = WithEntry("COM_PORT=NONE\r\n", "COM_PORT=COM100\r\nOLD_KEY=1\r\n");
  messages.answers = {true};
  messages.whileShown = [this] { UpdateValue(working, keys::kComPort, QStringLiteral("COM9")); };
  EXPECT_EQ(Open(user), QString());
  EXPECT_EQ(messages.shown, (QStringList{kMayUpdate, kUpdated, kNotLoaded}));
  EXPECT_EQ(ReadValue(working, keys::kComPort), QStringLiteral("COM9"));
}

TEST_F(UserFile, ARejectionLeavesWhatIsInForceAndNotInTheFile) {
  record.mem[3] = QStringLiteral("not saved yet");
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM100"), {kNotLoaded});
}

TEST_F(UserFile, AFolderInPlaceOfTheWorkingFileIsAFailedCopy) {
  QFile::remove(working);
  QDir().mkdir(working);
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM3"), {kNotOpened});
  EXPECT_TRUE(QDir(working).exists());
}

TEST_F(UserFile, AMissingSettingsFolderIsAFailedCopy) {
  working = Path(QStringLiteral("nowhere/Quarn.ini"));
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM3"), {kNotOpened});
}

TEST_F(UserFile, TheWorkingFileItselfIsNoUserFile) { ExpectRefused(working, {kNotOpened}); }

TEST_F(UserFile, SameTextIsSameSettings) {
  const auto same = [this](const QByteArray& user, const QByteArray& text) {
    return HoldSameSettings(WithBytes(user, QStringLiteral("user.qrn")), WithBytes(text));
  };
  EXPECT_TRUE(same("A=1\nB=2\n", "A=1\nB=2\n"));
  EXPECT_TRUE(
      same("\xEF\xBB\xBF"
           "A=1\r\nB=2\r\n",
           "A=1\nB=2\n"));
  EXPECT_TRUE(same("A=\xC3\xA9",
                   "\xEF\xBB\xBF"
                   "A=\xC3\xA9"));
  EXPECT_FALSE(same("A=1\nB=2\n", "B=2\nA=1\n"));
  EXPECT_FALSE(same("A=1 \n", "A=1\n"));
  EXPECT_FALSE(same(".VER=1\nA=1\n", ".VER=2\nA=1\n"));
  EXPECT_FALSE(same("A=1\n", "A=1\nB=2\n"));
  EXPECT_FALSE(same("A=1", "A=1\n"));
  EXPECT_FALSE(same("a=1\n", "A=1\n"));
}

TEST_F(UserFile, TheBufferEndsTheComparison) {
  const auto same = [this](const QByteArray& user, const QByteArray& text) {
    return HoldSameSettings(WithBytes(user, QStringLiteral("user.qrn")), WithBytes(text));
  };
  EXPECT_FALSE(same(QByteArray(16382, 'x') + 'a', QByteArray(16382, 'x') + 'b'));
  EXPECT_TRUE(same(QByteArray(16383, 'x') + 'a', QByteArray(16383, 'x') + 'b'));
}

TEST_F(UserFile, WhatCannotBeReadEqualsAnEmptyFile) {
  const QString missing = Path(QStringLiteral("missing"));
  const QString empty = WithBytes(QByteArray(), QStringLiteral("empty"));
  const QString bom = WithBytes(kBom, QStringLiteral("bom"));
  EXPECT_TRUE(HoldSameSettings(missing, Path(QStringLiteral("another"))));
  EXPECT_TRUE(HoldSameSettings(missing, empty));
  EXPECT_TRUE(HoldSameSettings(empty, missing));
  EXPECT_TRUE(HoldSameSettings(missing, bom));
  EXPECT_TRUE(HoldSameSettings(Path(QString()), empty));
  EXPECT_FALSE(HoldSameSettings(missing, working));
  EXPECT_FALSE(HoldSameSettings(working, missing));
}

QStringList& Logged() {
  static QStringList lines;
  return lines;
}

TEST_F(UserFile, AFileThatCannotBeReadIsNoted) {
  Logged().clear();
  QLoggingCategory::setFilterRules(QStringLiteral("quarn.settings.debug=true"));
  const QtMessageHandler before = qInstallMessageHandler(
      [](QtMsgType, const QMessageLogContext&, const QString& text) { Logged().append(text); });
  EXPECT_FALSE(HoldSameSettings(Path(QStringLiteral("missing")), working));
  qInstallMessageHandler(before);
  QLoggingCategory::setFilterRules(QString());
  EXPECT_EQ(Logged(), QStringList{QStringLiteral("No file found !!")});
}

TEST_F(UserFile, CopiesBytesAsTheyStand) {
  QByteArray bytes;
  for (int i = 0; i < 16384; ++i) bytes.append(static_cast<char>(i * 7));
  const QString from = WithBytes(bytes, QStringLiteral("from"));
  EXPECT_TRUE(CopySettingsFile(from, Path(QStringLiteral("new"))));
  EXPECT_EQ(BytesOf(Path(QStringLiteral("new"))), bytes);
  EXPECT_TRUE(CopySettingsFile(from, working));
  EXPECT_EQ(BytesOf(working), bytes);
  EXPECT_EQ(BytesOf(from), bytes);
}

TEST_F(UserFile, ACopyThatFailsTouchesNothing) {
  const QByteArray bytes = BytesOf(working);
  const QString folder = Path(QStringLiteral("folder"));
  QDir().mkdir(folder);
  EXPECT_FALSE(CopySettingsFile(Path(QStringLiteral("missing")), working));
  EXPECT_FALSE(CopySettingsFile(folder, working));
  const QString large = WithBytes(QByteArray(16385, 'x'), QStringLiteral("large"));
  EXPECT_FALSE(CopySettingsFile(large, working)) << "nobody could read the copy";
  EXPECT_TRUE(QFile::remove(large));
  EXPECT_FALSE(CopySettingsFile(working, folder));
  EXPECT_FALSE(CopySettingsFile(working, folder + QStringLiteral("/no/file")));
  EXPECT_FALSE(CopySettingsFile(working, QString()));
  EXPECT_FALSE(CopySettingsFile(working, working));
  EXPECT_FALSE(CopySettingsFile(working, folder + QStringLiteral("/../Quarn.ini")));
  EXPECT_EQ(BytesOf(working), bytes);
  EXPECT_EQ(FilesInFolder(), (QStringList{QStringLiteral("folder"), QStringLiteral("Quarn.ini")}));
  EXPECT_TRUE(QDir(folder).isEmpty());
}

TEST_F(UserFile, EachLookupReadsTheFileAnew) {
  WithBytes(".BEGIN\nMEM0=one\n.END\n");
  EXPECT_EQ(ReadValue(working, keys::kMem[0]), QStringLiteral("one"));
  WithBytes(".BEGIN\nMEM0=two\n.END\n");
  EXPECT_EQ(ReadValue(working, keys::kMem[0]), QStringLiteral("two"));
  QFile::remove(working);
  EXPECT_EQ(ReadValue(working, keys::kMem[0]), std::nullopt);
}

}  // namespace
}  // namespace quarn::test
