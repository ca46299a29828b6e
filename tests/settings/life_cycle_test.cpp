#include "settings/life_cycle.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
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

class LifeCycle : public ::testing::Test {
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
  QByteArray DefaultBytes() {
    const QString other = folder.filePath(QStringLiteral("default.ini"));
    WriteDefaultFile(other);
    QFile file(other);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  void Load() { LoadInitialSettings(path, record, messages); }

  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("Quarn.ini"));
  SettingsRecord record;
  RecordedMessages messages;
};

TEST_F(LifeCycle, AGoodFileLoadsWithoutAWord) {
  WriteDefaultsWith("COM_PORT=NONE", "COM_PORT=COM3");
  Load();
  EXPECT_EQ(messages.shown, QStringList());
  EXPECT_EQ(record.comPort, QStringLiteral("COM3"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(LifeCycle, OrderAndVersionTextDoNotMatter) {
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

TEST_F(LifeCycle, AMissingFileIsReplacedByTheDefaults) {
  messages.whileShown = [this] { EXPECT_FALSE(QFile::exists(path)); };
  Load();
  EXPECT_EQ(messages.shown, QStringList{kNotFound});
  EXPECT_EQ(Bytes(), DefaultBytes());
  EXPECT_EQ(record.comBps, QStringLiteral("9600"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(LifeCycle, AMissingKeyIsAddedAndTheRestKept) {
  WriteDefaultsWith("MARK_COLOR=WHITE\r\n", "");
  QByteArray bytes = Bytes();
  Write(bytes.replace("COM_PORT=NONE", "COM_PORT=COM7").replace("(Ver. 1.00)", "(Ver. 0.90)"));
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes().replace("COM_PORT=NONE", "COM_PORT=COM7"));
  EXPECT_EQ(record.comPort, QStringLiteral("COM7"));
}

TEST_F(LifeCycle, AnUnknownKeyIsRemoved) {
  WriteDefaultsWith("PORT_SPEED=HIGH", "OLD_KEY=1\r\nPORT_SPEED=LOW");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(Bytes(), DefaultBytes().replace("PORT_SPEED=HIGH", "PORT_SPEED=LOW"));
}

TEST_F(LifeCycle, AnUnknownLineThatTakesOthersWithItStillEndsInAWholeFile) {
  WriteDefaultsWith("MEM0=function-1", "MEM\r\nMEM0=mine");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kDifferent});
  EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::Equal);
  EXPECT_EQ(record.mem[9], QStringLiteral("function-10"));
}

TEST_F(LifeCycle, BrokenFilesAreReplaced) {
  const QList<QByteArray> broken = {QByteArray(),
                                    "garbage",
                                    ".BEGIN\nCOM_PORT=COM3\n",
                                    "COM_PORT=COM3\n.END\n",
                                    QByteArray("\xff\xfe\x00\x01", 4),
                                    ".BEGIN\nA=1\nB=2\n.END\n",
                                    QByteArray(16385, 'x')};
  for (const QByteArray& bytes : broken) {
    messages.shown.clear();
    Write(bytes);
    Load();
    EXPECT_EQ(messages.shown, QStringList{kInvalid}) << bytes.left(40).toStdString();
    EXPECT_EQ(Bytes(), DefaultBytes());
    EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
  }
}

TEST_F(LifeCycle, AnInvalidPortNameStartsOver) {
  for (const char* name : {"COM100", "com3", "COM/", ""}) {
    messages.shown.clear();
    WriteDefaultsWith("COM_PORT=NONE", QByteArray("COM_PORT=") + name);
    Load();
    EXPECT_EQ(messages.shown, QStringList{kBadPort}) << name;
    EXPECT_EQ(Bytes(), DefaultBytes());
    EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
  }
}

TEST_F(LifeCycle, AnEmptyValueStartsOver) {
  WriteDefaultsWith("DELIMITER=CR", "DELIMITER=");
  Load();
  EXPECT_EQ(messages.shown, QStringList{kBadPort});
  EXPECT_EQ(record.delimiter, QStringLiteral("CR"));
}

TEST_F(LifeCycle, WhereNothingCanBeWrittenTheProgramStillHasItsDefaults) {
  QDir().mkpath(path);  // a folder stands in the file's place
  Load();
  EXPECT_EQ(messages.shown, (QStringList{kNotFound, kBadPort}));
  EXPECT_EQ(record.inputMax, QStringLiteral("N"));
  EXPECT_EQ(record.loadedMarker, QStringLiteral("TRUE"));
  EXPECT_TRUE(QDir(path).exists());
}

TEST_F(LifeCycle, ComparisonNamesWhatDiffers) {
  EXPECT_EQ(CompareWithDefaults(path).result, KeySetResult::NoFile);
  EXPECT_EQ(CompareWithDefaults(folder.path()).result, KeySetResult::NoFile);
  WriteDefaultsWith("MEM3=function-4\r\n", "OTHER=1\r\nno equals sign\r\n");
  const KeySetComparison comparison = CompareWithDefaults(path);
  EXPECT_EQ(comparison.result, KeySetResult::Different);
  EXPECT_EQ(comparison.unknownKeys,
            (QStringList{QStringLiteral("OTHER="), QStringLiteral("no equals sign")}));
  EXPECT_EQ(comparison.missingLines, QStringList{QStringLiteral("MEM3=function-4")});
}

TEST_F(LifeCycle, PreparingMakesTheFolderAndDropsAbandonedFiles) {
  const QString data = folder.filePath(QStringLiteral("Halvo/"));
  path = data + QStringLiteral("Quarn.ini");
  PrepareWorkingFile(data);
  EXPECT_TRUE(QDir(data).exists());
  Write(QByteArray("STARTUP_STATE and more"));
  PrepareWorkingFile(data);
  EXPECT_FALSE(QFile::exists(path));
  Write(QByteArray("STARTUP_STAT"));
  PrepareWorkingFile(data);
  EXPECT_TRUE(QFile::exists(path));
}

TEST_F(LifeCycle, PreparingKeepsAFileOfTheLargestSize) {
  const QString data = folder.path() + QLatin1Char('/');
  Write(QByteArray(16384, 'x'));
  PrepareWorkingFile(data);
  EXPECT_TRUE(QFile::exists(path));
  Write(QByteArray(16385, 'x'));
  PrepareWorkingFile(data);
  EXPECT_FALSE(QFile::exists(path));
}

}  // namespace
}  // namespace quarn::test
