#include <QDir>
#include <QFile>
#include <ostream>

#include "settings/key_store.h"
#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

const QString kStartingInternally = QStringLiteral("Starting in internal configuration mode.");

/// Starts with a configuration file named on the command line.
class StartWithFile : public Starts {
 protected:
  const Values kConnected{{QStringLiteral("COM_PORT"), kPort},
                          {QStringLiteral("START_DISP"), QStringLiteral("OFF")}};

  void LoadsAndConnects() {
    EXPECT_TRUE(Passing(QStringLiteral("QRN file was opened successfully.")));
    EXPECT_TRUE(Passing(QStringLiteral("Successfully Connected to \"COM3\".")));
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  }
  /// Without the file the working settings are in force, and as they were.
  void FallsBackTo(const QByteArray& workingSettings) {
    EXPECT_TRUE(Passing(kStartingInternally));
    EXPECT_TRUE(Passing(QStringLiteral("Successfully Connected to \"COM3\".")));
    EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
    EXPECT_TRUE(StatusBecomes(kInternal));
    EXPECT_EQ(Bytes(SettingsFile()), workingSettings);
    EXPECT_FALSE(MenuItemEnabled(QStringLiteral("File"), QStringLiteral("Save")));
  }
  QString WriteOutdatedFile() {
    QString path = WriteUserFile(QStringLiteral("old.qrn"), kConnected);
    EXPECT_TRUE(RemoveKey(path, SettingsKey(u"MARK_COLOR=")));
    EXPECT_TRUE(AddKeyLine(path, QStringLiteral("OLD_KEY=1")));
    return path;
  }
  void AnswerUpdateQuestion(const char* button) {
    EXPECT_TRUE(BoxSays(kConfirmation, {QStringLiteral("The config file needs to be updated. "),
                                        QStringLiteral("Is it OK to proceed?")}));
    EXPECT_EQ(Buttons(kConfirmation), (QStringList{QStringLiteral("YES"), QStringLiteral("NO")}));
    AnswerBox(kConfirmation, QLatin1String(button));
  }
};

TEST_F(StartWithFile, LoadsItAndConnects) {
  WriteSettings({{QStringLiteral("MEM0"), QStringLiteral("other")}});
  PlugIn("* -> line \"OK\"");
  const QString file = WriteUserFile(QStringLiteral("bench.qrn"), kConnected);
  const QByteArray before = Bytes(file);
  StartProgram({file});
  EXPECT_TRUE(Passing(QStringLiteral("Loading user difinition file.")));
  LoadsAndConnects();
  EXPECT_TRUE(Eventually([this] {
    const QString status = Texts(kMain).value(2);
    return status.startsWith(QStringLiteral("( /")) && status.endsWith(QStringLiteral("/bench.qrn )"));
  })) << Texts(kMain).join(QLatin1Char('|')).toStdString();
  EXPECT_TRUE(SwitchBecomes("ON"));
  EXPECT_TRUE(MenuItemEnabled(QStringLiteral("File"), QStringLiteral("Save")));
  EXPECT_EQ(Bytes(SettingsFile()), before);
  EXPECT_EQ(Bytes(file), before);
}

TEST_F(StartWithFile, WhoseNameHasBlanksAndForeignLetters) {
  const QString name = QStringLiteral("Prüf stand/測定 1.qrn");
  PlugIn("* -> line \"OK\"");
  const QString file = WriteUserFile(name, kConnected);
  program.setWorkingDirectory(home.path());
  StartProgram({name});
  LoadsAndConnects();
  EXPECT_TRUE(StatusBecomes(QStringLiteral("( ") + name + QStringLiteral(" )")));
  // There was no working settings file before.
  EXPECT_EQ(Bytes(SettingsFile()), Bytes(file));
}

TEST_F(StartWithFile, WhereThereIsNoSettingsFolder) {
  const QString file =
      WriteUserFile(QStringLiteral("first.qrn"), {{QStringLiteral("START_DISP"), QStringLiteral("OFF")}});
  // Nor one above it.
  SetVariable("XDG_CONFIG_HOME", home.filePath(QStringLiteral("not/yet/there")));
  StartProgram({file});
  EXPECT_TRUE(Passing(QStringLiteral("QRN file was opened successfully.")));
  AcknowledgeNoPort();
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_EQ(Bytes(home.filePath(QStringLiteral("not/yet/there/Halvo/Quarn/Quarn.ini"))), Bytes(file));
}

TEST_F(StartWithFile, AnOutdatedOneIsUpdatedWhenTheUserAgrees) {
  WriteSettings({});
  PlugIn("* -> line \"OK\"");
  const QString file = WriteOutdatedFile();
  StartProgram({file});
  AnswerUpdateQuestion("YES");
  Acknowledge(kInformation, {QStringLiteral("Configuration file is updated.")});
  LoadsAndConnects();
  EXPECT_EQ(Bytes(file), BytesWith(kConnected));
  EXPECT_EQ(Bytes(SettingsFile()), BytesWith(kConnected));
}

TEST_F(StartWithFile, AnOutdatedOneStaysAsItIsWhenTheUserDeclines) {
  WriteSettings(kConnected);
  PlugIn("* -> line \"OK\"");
  const QString file = WriteOutdatedFile();
  const QByteArray outdated = Bytes(file);
  const QByteArray settings = Bytes(SettingsFile());
  StartProgram({file});
  AnswerUpdateQuestion("NO");
  FallsBackTo(settings);
  EXPECT_EQ(Bytes(file), outdated);
}

/// A file that cannot be loaded.
struct BadFile {
  const char* name;
  /// Makes it, out of a good one.
  void (*make)(const QString& path);
  const char* first;
  const char* second;
};

void PrintTo(const BadFile& file, std::ostream* out) { *out << file.name; }

class StartWithBadFile : public StartWithFile, public ::testing::WithParamInterface<BadFile> {};

TEST_P(StartWithBadFile, FallsBackToTheWorkingSettings) {
  WriteSettings(kConnected);
  PlugIn("* -> line \"OK\"");
  const QString file = WriteUserFile(QStringLiteral("bad.qrn"), {});
  GetParam().make(file);
  const QByteArray settings = Bytes(SettingsFile());
  StartProgram({file});
  Acknowledge(kError, {QLatin1String(GetParam().first), QLatin1String(GetParam().second)});
  FallsBackTo(settings);
}

void CutOffTheEnd(const QString& path) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  const QByteArray bytes = file.readAll();
  ASSERT_TRUE(file.resize(bytes.indexOf(".END")));
}

constexpr int kLargest = 102400;

void FillUpTo(const QString& path, qint64 size) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::Append));
  file.write(QByteArray(size - file.size(), '\n'));
}

void MakeTooLarge(const QString& path) { FillUpTo(path, kLargest + 1); }

/// It can be read, but the working settings file may not become so large.
void MakeLarge(const QString& path) { FillUpTo(path, kLargest); }

void NameAWrongPort(const QString& path) {
  ASSERT_TRUE(UpdateValue(path, SettingsKey(u"COM_PORT="), QStringLiteral("COM100")));
}

void Remove(const QString& path) { ASSERT_TRUE(QFile::remove(path)); }

void ReplaceByFolder(const QString& path) {
  Remove(path);
  ASSERT_TRUE(QDir().mkdir(path));
}

constexpr char kInvalid[] = "Invalid file format.";
constexpr char kNotLoaded[] = "Could not load file contents.";

INSTANTIATE_TEST_SUITE_P(, StartWithBadFile,
                         ::testing::Values(BadFile{"NoEnd", &CutOffTheEnd, kInvalid, kNotLoaded},
                                           BadFile{"TooLarge", &MakeTooLarge, kInvalid, kNotLoaded},
                                           BadFile{"Large", &MakeLarge, "Config file is invalid.",
                                                   "Click \"OK\" to quit loading."},
                                           BadFile{"WrongPort", &NameAWrongPort, kInvalid, kNotLoaded},
                                           BadFile{"Missing", &Remove, "QRN file was not found.",
                                                   "Failed to load settings from QRN file."},
                                           BadFile{"Folder", &ReplaceByFolder, kInvalid, kNotLoaded}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace quarn::test
