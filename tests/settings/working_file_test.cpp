#include "settings/working_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "settings/damaged_file.h"
#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "support/recorded_messages.h"

namespace quarn::test {
namespace {

const QString kNotFound =
    QStringLiteral("information/: Warning//Initial settings file not found./Starting with default settings.");
const QString kInvalid =
    QStringLiteral("information/: Warning//Initial file is invalid./Starting with default settings.");
const QString kDifferent = QStringLiteral(
    "information/: Warning//Initial file version is different or corrupt./Updating configuration settings.");
const QString kBadPort =
    QStringLiteral("information/: Warning//Defined port name is invalid./Starting with default settings.");

class WorkingFile : public ::testing::Test {
 protected:
  void Write(const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  QByteArray Bytes() const {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  /// The default file with one text replaced.
  void WriteDefaultsWith(const QByteArray& before, const QByteArray& after) {
    WriteDefaultFile(path);
    QByteArray bytes = Bytes();
    ASSERT_TRUE(bytes.contains(before));
    Write(bytes.replace(before, after));
  }
  static QByteArray DefaultBytes() { return NormalisedBytes(SortedDefaults()); }
  [[nodiscard]] QByteArray DamagedBytes() const {
    QFile file(DamagedFileOf(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  [[nodiscard]] QStringList Files() const {
    return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }
  void Load() { LoadInitialSettings(path, record, messages); }

  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("Quarn.ini"));
  SettingsRecord record;
  RecordedMessages messages;
};

TEST_F(WorkingFile, AGoodFileLoadsWithoutAWord) {
  WriteDefaultsWith("COM_PORT=NONE", "COM_PORT=COM3");
  Load();
  EXPECT_EQ(messages.shown, QStringList());
  EXPECT_EQ(record.comPort, QStringLiteral("COM3"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(WorkingFile, OrderAndVersionTextDoNotMatter) {
  QByteArray text(".VER=Something (Ver. 0.1)\n.BEGIN\n");
  const QStringList lines = DefaultLines();
  for (auto line = lines.crbegin(); line != lines.crend(); ++line) text += line->toUtf8() + '\n';
  text += ".END\n";
  Write(text);
  Load();
  EXPECT_EQ(messages.shown, QStringList());
  EXPECT_EQ(Bytes(), text);
  EXPECT_EQ(record.chkCmd, QStringLiteral("id"));
}

TEST_F(WorkingFile, AMissingFileIsReplacedByTheDefaults) {
  messages.whileShown = [this] { EXPECT_FALSE(QFile::exists(path)); };
  Load();
  EXPECT_EQ(messages.shown, QStringList{kNotFound});
  EXPECT_EQ(Bytes(), DefaultBytes());
  EXPECT_EQ(record.comBps, QStringLiteral("9600"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(WorkingFile, AMissingKeyIsAddedAndTheRestKept) {
  WriteDefaultsWith("MARK_COLOR=WHITE\r\n", "");
  QByteArray bytes = Bytes();
  Write(bytes.replace("COM_PORT=NONE", "COM_PORT=COM7").replace("(Ver. 1.00)", "(Ver. 0.90)"));
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes().replace("COM_PORT=NONE", "COM_PORT=COM7"));
  EXPECT_EQ(record.comPort, QStringLiteral("COM7"));
}

TEST_F(WorkingFile, AnUnknownKeyIsRemoved) {
  WriteDefaultsWith("PORT_SPEED=HIGH", "OLD_KEY=1\r\nPORT_SPEED=LOW");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes().replace("PORT_SPEED=HIGH", "PORT_SPEED=LOW"));
}

TEST_F(WorkingFile, AnUnknownLineThatTakesOthersWithItStillEndsInAWholeFile) {
  WriteDefaultsWith("MEM0=function-1", "MEM\r\nMEM0=mine");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::Equal);
  EXPECT_EQ(record.mem[9], QStringLiteral("function-10"));
}

TEST_F(WorkingFile, AKeyThatOnlyAStrayLineNamesIsAddedAtOnce) {
  WriteDefaultsWith("MARK_COLOR=WHITE\r\n", "");
  QByteArray bytes = Bytes();
  Write(bytes.replace("COM_BPS=9600\r\n", "") + "was COM_BPS=1200\r\n");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes());
}

TEST_F(WorkingFile, BrokenFilesAreReplacedAndKeptBeside) {
  const QList<QByteArray> broken = {"garbage",
                                    ".BEGIN\nCOM_PORT=COM3\n",
                                    "COM_PORT=COM3\n.END\n",
                                    QByteArray("\xff\xfe\x00\x01", 4),
                                    DefaultBytes().replace("MEM3=function-4", "MEM3=10 \xB5V"),
                                    ".BEGIN\nA=1\nB=2\n.END\n",
                                    QByteArray(16385, 'x'),
                                    SoundFileOfSize(16385),
                                    SoundFileOfSize(25000)};
  for (const QByteArray& bytes : broken) {
    messages.shown.clear();
    Write(bytes);
    Load();
    EXPECT_EQ(messages.shown, QStringList{kInvalid}) << bytes.left(40).toStdString();
    EXPECT_EQ(Bytes(), DefaultBytes());
    EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
    EXPECT_EQ(DamagedBytes(), bytes);
  }
  EXPECT_EQ(Files(), (QStringList{QStringLiteral("Quarn.ini"), QStringLiteral("Quarn.ini.damaged")}));
}

TEST_F(WorkingFile, AnEmptyFileIsReplacedAndThereIsNothingToKeep) {
  Write(QByteArray());
  Load();
  EXPECT_EQ(messages.shown, QStringList{kInvalid});
  EXPECT_EQ(Bytes(), DefaultBytes());
  EXPECT_EQ(Files(), QStringList{QStringLiteral("Quarn.ini")});
}

TEST_F(WorkingFile, AFileOfTheLargestSizeLoadsAndStays) {
  for (const qsizetype size : {8192, 8193, 10000, 16383, 16384}) {
    Write(SoundFileOfSize(size));
    PrepareWorkingFile(folder.path() + QLatin1Char('/'));
    Load();
    EXPECT_EQ(messages.shown, QStringList()) << size;
    EXPECT_EQ(Bytes(), SoundFileOfSize(size));
    EXPECT_EQ(record.mem[0], ReadValue(path, keys::kMem[0]));
  }
  EXPECT_EQ(Files(), QStringList{QStringLiteral("Quarn.ini")});
}

TEST_F(WorkingFile, SevenLongStoredCommandsAreAllThereAgain) {
  // In plain letters: more than 8192 characters, and far from 16384 bytes.
  QByteArray bytes = DefaultBytes();
  for (int key = 0; key < kStoredCommandCount; ++key) {
    const QByteArray name = "MEM" + QByteArray::number(key) + "=";
    bytes.replace(name + "function-" + QByteArray::number(key + 1) + "\r",
                  name + QByteArray(1018, 'x') + "\r");
  }
  Write(bytes);
  Load();
  EXPECT_EQ(messages.shown, QStringList());
  EXPECT_EQ(record.mem[6], QString(1018, u'x'));
  EXPECT_EQ(Bytes(), bytes);
}

TEST_F(WorkingFile, AKeyInOtherLettersIsAnotherKey) {
  WriteDefaultsWith("COM_PORT=NONE", "com_port=COM3");
  const KeySetComparison comparison = CompareWithDefaults(path);
  EXPECT_EQ(comparison.unknownKeys, QStringList{QStringLiteral("com_port=")});
  EXPECT_EQ(comparison.missingLines, QStringList{QStringLiteral("COM_PORT=NONE")});
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes());
  EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
}

TEST_F(WorkingFile, NothingIsDoneBeforeItsWarningIsAcknowledged) {
  struct Case {
    QByteArray bytes;
    QString warning;
  };
  const QList<Case> cases = {{"garbage", kInvalid},
                             {SoundFileOfSize(16385), kInvalid},
                             {DefaultBytes().replace("MARK_COLOR=WHITE\r\n", ""), kDifferent},
                             {DefaultBytes().replace("MARK_COLOR", "OLD_KEY"), kDifferent},
                             {DefaultBytes().replace("COM_PORT=NONE", "COM_PORT=COM100"), kBadPort},
                             {DefaultBytes().replace("DELIMITER=CR", "DELIMITER="), kBadPort}};
  for (const Case& each : cases) {
    QFile::remove(DamagedFileOf(path));
    Write(each.bytes);
    record = {};
    messages.shown.clear();
    messages.whileShown = [&] {
      EXPECT_EQ(Bytes(), each.bytes);
      EXPECT_EQ(Files(), QStringList{QStringLiteral("Quarn.ini")});
      EXPECT_EQ(record.loadedMarker, QString());
    };
    Load();
    EXPECT_EQ(messages.shown, QStringList{each.warning});
    EXPECT_NE(Bytes(), each.bytes);
    EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
  }
}

TEST_F(WorkingFile, TwoWarningsComeOneAfterTheOther) {
  WriteDefaultsWith("COM_PORT=NONE", "COM_PORT=COM100\r\nOLD_KEY=1");
  QList<QByteArray> seen;
  messages.whileShown = [&] { seen.append(Bytes()); };
  const QByteArray before = Bytes();
  Load();
  EXPECT_EQ(messages.shown, (QStringList{kDifferent, kBadPort}));
  const QByteArray upgraded = DefaultBytes().replace("COM_PORT=NONE", "COM_PORT=COM100");
  EXPECT_EQ(seen, (QList<QByteArray>{before, upgraded}));
  EXPECT_EQ(DamagedBytes(), upgraded);
}

TEST_F(WorkingFile, AnUpdateThatWouldBeTooLargeIsNotMade) {
  Write(SoundFileOfSize(16384 + 18).replace("MARK_COLOR=WHITE\r\n", ""));
  const QByteArray bytes = Bytes();
  ASSERT_EQ(bytes.size(), 16384);
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), bytes);
  EXPECT_EQ(record.mem[0], ReadValue(path, keys::kMem[0])) << "it holds all that is loaded";
}

TEST_F(WorkingFile, AnInvalidPortNameStartsOver) {
  for (const char* name : {"COM100", "com3", "COM/", ""}) {
    messages.shown.clear();
    WriteDefaultsWith("COM_PORT=NONE", QByteArray("COM_PORT=") + name);
    const QByteArray before = Bytes();
    Load();
    EXPECT_EQ(messages.shown, QStringList{kBadPort}) << name;
    EXPECT_EQ(Bytes(), DefaultBytes());
    EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
    EXPECT_EQ(DamagedBytes(), before);
  }
}

TEST_F(WorkingFile, AnEmptyValueStartsOver) {
  WriteDefaultsWith("DELIMITER=CR", "DELIMITER=");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kBadPort});
  EXPECT_EQ(record.delimiter, QStringLiteral("CR"));
}

TEST_F(WorkingFile, WhereNothingCanBeWrittenTheProgramStillHasItsDefaults) {
  QDir().mkpath(path);  // a folder stands in the file's place
  Load();
  EXPECT_EQ(messages.shown, (QStringList{kNotFound, kBadPort}));
  EXPECT_EQ(record.inputMax, QStringLiteral("N"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
  EXPECT_TRUE(QDir(path).exists());
}

TEST_F(WorkingFile, ComparisonNamesWhatDiffers) {
  EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::NoFile);
  EXPECT_EQ(CompareWithDefaults(folder.path()).result, KeySetResult::NoFile);
  WriteDefaultsWith("MEM3=function-4\r\n", "OTHER=1\r\nno equals sign\r\n");
  const KeySetComparison comparison = CompareWithDefaults(path);
  EXPECT_EQ(comparison.result, KeySetResult::Different);
  EXPECT_EQ(comparison.unknownKeys,
            (QStringList{QStringLiteral("OTHER="), QStringLiteral("no equals sign")}));
  EXPECT_EQ(comparison.missingLines, QStringList{QStringLiteral("MEM3=function-4")});
}

TEST_F(WorkingFile, PreparingMakesTheFolderAndTakesAbandonedFilesAway) {
  const QString data = folder.filePath(QStringLiteral("Halvo/Quarn/"));
  path = data + QStringLiteral("Quarn.ini");
  PrepareWorkingFile(data);
  EXPECT_TRUE(QDir(data).exists());
  Write(QByteArray("STARTUP_STATE and more"));
  PrepareWorkingFile(data);
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_EQ(DamagedBytes(), QByteArray("STARTUP_STATE and more"));
  Write(QByteArray("STARTUP_STAT"));
  PrepareWorkingFile(data);
  EXPECT_TRUE(QFile::exists(path));
  EXPECT_EQ(DamagedBytes(), QByteArray("STARTUP_STATE and more"));
}

TEST_F(WorkingFile, TheNextDamagedFileCanReplaceOneThatWasReadOnly) {
  const QString data = folder.path() + QLatin1Char('/');
  for (const char* bytes : {"STARTUP_STATE one", "STARTUP_STATE two"}) {
    Write(QByteArray(bytes));
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner));
    PrepareWorkingFile(data);
    EXPECT_EQ(DamagedBytes(), QByteArray(bytes));
    EXPECT_TRUE(QFile::permissions(DamagedFileOf(path)) & QFile::WriteOwner);
  }
}

TEST_F(WorkingFile, PreparingKeepsAFileOfTheLargestSize) {
  const QString data = folder.path() + QLatin1Char('/');
  Write(SoundFileOfSize(16384));
  PrepareWorkingFile(data);
  EXPECT_EQ(Bytes(), SoundFileOfSize(16384));
  Write(SoundFileOfSize(16385));
  PrepareWorkingFile(data);
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_EQ(DamagedBytes(), SoundFileOfSize(16385));
  Load();
  EXPECT_EQ(messages.shown, QStringList{kNotFound});
  EXPECT_EQ(Bytes(), DefaultBytes());
  EXPECT_EQ(DamagedBytes(), SoundFileOfSize(16385)) << "the defaults do not take its place";
}

TEST_F(WorkingFile, AFileThatCannotBeKeptIsNotReplaced) {
  Write("garbage");
  ASSERT_TRUE(QDir().mkdir(DamagedFileOf(path)));
  Load();
  EXPECT_EQ(messages.shown, (QStringList{kInvalid, kBadPort}));
  EXPECT_EQ(Bytes(), QByteArray("garbage"));
  EXPECT_EQ(record.comBps, QStringLiteral("9600")) << "the program still has its defaults";
  Write("STARTUP_STATE");
  PrepareWorkingFile(folder.path() + QLatin1Char('/'));
  EXPECT_EQ(Bytes(), QByteArray("STARTUP_STATE"));
}

}  // namespace
}  // namespace quarn::test
