#include "app/start_up.h"

#include "app/app_fixture.h"
#include "app/scaling.h"
#include "settings/damaged_file.h"
#include "settings/settings_test_support.h"
#include "support/recorded_stage.h"

namespace quarn::test {
namespace {

const QString kNotFoundWarning =
    QStringLiteral("information/: Warning//Initial settings file not found./Starting with default settings.");
const QString kInternal = QStringLiteral("transient/Starting in internal configuration mode.");
const QString kLoading = QStringLiteral("transient/Loading user difinition file.");
const QStringList kUntilCommandLine{"lock", "splash", "dpi", "menu bar", "drops", "command line"};
const QStringList kEnd{"title", "user file", "menu state", "start timer"};

class StartUpTest : public AppTest {
 protected:
  StartUpResult Start() { return StartUp(program, stage); }
  QString UserFile() const { return m_folder + QStringLiteral("../mine.qrn"); }
  /// A user file with these values; the data folder is there.
  void MakeUserFile(const QList<std::pair<QString, QString>>& values) {
    MakeFolders();
    WriteSettings(UserFile(), values);
    stage.file = UserFile();
  }

  PortMonitor monitor{program, window, [](int) {}};
  RecordedStage stage{journal, window, monitor};
};

TEST_F(StartUpTest, OnAnEmptyAccount) {
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(Happened(), (kUntilCommandLine +
                         QStringList{kNotFoundWarning, "place 3 3", kUndefined, "show", "terminal"} + kEnd));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("NONE"));
  EXPECT_EQ(program.settings.loadedMarker, QStringLiteral("TRUE"));
  EXPECT_TRUE(QFile::exists(program.workingSettingsFile));
  EXPECT_EQ(program.userFile, QString());
}

TEST_F(StartUpTest, WhereWindowsCannotBePlacedTheMainDialogComesInFrontOfTheTerminalScreen) {
  stage.mayPlaceWindows = false;
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(Happened(), (kUntilCommandLine +
                         QStringList{kNotFoundWarning, "place 3 3", kUndefined, "terminal", "show"} + kEnd));
}

TEST_F(StartUpTest, ASecondInstanceTouchesNothing) {
  MakeFolders();
  stage.lock = InstanceLock::TakenByAnother;
  EXPECT_EQ(Start(), StartUpResult::NotAlone);
  EXPECT_EQ(Happened(), (QStringList{"lock", "plain/\"Quarn\" is already open !", "ask"}));
  EXPECT_FALSE(QFile::exists(program.workingSettingsFile));
}

TEST_F(StartUpTest, WithoutALockItDoesNotRun) {
  stage.lock = InstanceLock::Failed;
  EXPECT_EQ(Start(), StartUpResult::NotAlone);
  EXPECT_EQ(Happened(), (QStringList{"lock", "plain/\"Quarn\" found opening error\n/lock: no room"}));
}

TEST_F(StartUpTest, ARefusedScalingIsToldAfterTheSplash) {
  for (const int dpi : {0, 119, 192}) {
    stage.dpi = dpi;
    EXPECT_EQ(Start(), StartUpResult::DisplayRefused);
    EXPECT_EQ(Happened(),
              (QStringList{"lock", "splash", "dpi", QStringLiteral("how %1").arg(ScalingPercent(dpi)),
                           ("error/: Error//Windows display scaling Settings/Scaling must be 100, 125, "
                            "150 or 175(%).")}))
        << dpi;
  }
  EXPECT_FALSE(QFile::exists(program.workingSettingsFile));
}

TEST_F(StartUpTest, HowToStartIsInABoxWhereNobodyReadsStandardError) {
  stage.dpi = 192;
  stage.untoldHow = QStringLiteral("quarn: this way");
  EXPECT_EQ(Start(), StartUpResult::DisplayRefused);
  EXPECT_EQ(Happened(), (QStringList{"lock", "splash", "dpi", "how 200",
                                     ("error/: Error//Windows display scaling Settings/Scaling must be 100, "
                                      "125, 150 or 175(%)."),
                                     "plain/quarn: this way"}));
}

TEST_F(StartUpTest, KeepsTheScaling) {
  stage.dpi = 144;
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(program.state.displayScalePercent, 150);
}

TEST_F(StartUpTest, AWrappedMenuBarIsRefused) {
  stage.wraps = true;
  stage.fontHeight = 31;
  EXPECT_EQ(Start(), StartUpResult::DisplayRefused);
  EXPECT_EQ(Happened(),
            (QStringList{"lock", "splash", "dpi", "menu bar",
                         ("error/: Error//Windows Text Font size Settings/Text font size (31 ) is too "
                          "large")}));
}

TEST_F(StartUpTest, ALargeFontPassesWhenTheMenuBarDoesNotWrap) {
  stage.fontHeight = 200;
  EXPECT_EQ(Start(), StartUpResult::Running);
}

TEST_F(StartUpTest, ConnectsToTheConfiguredPort) {
  const PseudoTerminal terminal;
  MakeFolders();
  PlugIn(QStringLiteral("COM3"), terminal);
  WriteSettings(program.workingSettingsFile,
                {{"COM_PORT", "COM3"}, {"START_DISP", "OFF"}, {"MAIN_POS", "TR"}});
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(Happened(), (kUntilCommandLine + QStringList{"place 98 3", Connected("COM3"), "show"} + kEnd));
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
}

TEST_F(StartUpTest, KeepsTheNameOfAPortThatCannotBeOpened) {
  MakeFolders();
  WriteSettings(program.workingSettingsFile, {{"COM_PORT", "COM3"}, {"MAIN_POS", "??"}});
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(Happened(),
            (kUntilCommandLine + QStringList{"place 3 3", NotAvailable("COM3"), "show", "terminal"} + kEnd));
  EXPECT_FALSE(program.connection.connected.IsSet());
  EXPECT_EQ(program.state.currentPortName, QStringLiteral("COM3"));
}

TEST_F(StartUpTest, LoadsTheFileOnTheCommandLineWhichConnectsByItself) {
  MakeUserFile({{"COM_PORT", "COM3"}});
  const PseudoTerminal terminal;
  PlugIn(QStringLiteral("COM3"), terminal);
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(Happened(),
            (kUntilCommandLine +
             QStringList{kLoading, kOpened, Connected("COM3"), "place 3 3", "show", "terminal"} + kEnd));
  EXPECT_EQ(program.userFile, UserFile());
  EXPECT_TRUE(program.connection.connected.IsSet());
  EXPECT_EQ(program.settings.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(StartUpTest, AMissingFileOnTheCommandLineIsToldAndPassedOver) {
  MakeFolders();
  WriteSettings(program.workingSettingsFile, {{"COM_PORT", "NONE"}});
  stage.file = QStringLiteral("/nowhere/at/all.qrn");
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(
      Happened(),
      (kUntilCommandLine +
       QStringList{kLoading, "error/: Error//QRN file was not found./Failed to load settings from QRN file.",
                   kInternal, "place 3 3", kUndefined, "show", "terminal"} +
       kEnd));
  EXPECT_EQ(program.userFile, QString());
}

TEST_F(StartUpTest, AFileThatCannotBeLoadedLeadsToTheWorkingSettings) {
  MakeUserFile({{"COM_PORT", "COM100"}});
  WriteSettings(program.workingSettingsFile, {{"BK_COLOR", "NAVY"}});
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_EQ(
      Happened(),
      (kUntilCommandLine +
       QStringList{kLoading, kNotLoaded, kInternal, "place 3 3", kUndefined, "show", "terminal"} + kEnd));
  EXPECT_EQ(program.userFile, QString());
  EXPECT_EQ(program.settings.bkColor, QStringLiteral("NAVY"));
  EXPECT_EQ(program.settings.loadedMarker, QStringLiteral("TRUE"));
}

TEST_F(StartUpTest, WithAFileOnTheCommandLineTheWorkingFileIsOnlyLoaded) {
  MakeUserFile({{"COM_PORT", "COM100"}});
  QFile file(program.workingSettingsFile);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_GT(file.write("STARTUP_STATE\n"), 0);
  file.close();
  EXPECT_EQ(Start(), StartUpResult::Running);
  const QString invalid =
      QStringLiteral("information/: Warning//Initial file is invalid./Starting with default settings.");
  EXPECT_EQ(Happened(), (kUntilCommandLine +
                         QStringList{kLoading, kNotLoaded, invalid, kInternal, "place 3 3", kUndefined,
                                     "show", "terminal"} +
                         kEnd));
}

TEST_F(StartUpTest, KeepsAWorkingFileOfTheLargestSizeAndTakesALargerOneAway) {
  MakeFolders();
  for (const qsizetype size : {16384, 16385}) {
    const QByteArray bytes = SoundFileOfSize(size).replace("BK_COLOR=NAVY", "BK_COLOR=TEAL");
    QFile file(program.workingSettingsFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), size);
    file.close();
    EXPECT_EQ(Start(), StartUpResult::Running);
    const bool kept = size == 16384;
    EXPECT_EQ(messages.shown, kept ? QStringList{kUndefined} : (QStringList{kNotFoundWarning, kUndefined}));
    messages.shown.clear();
    EXPECT_EQ(program.settings.bkColor, kept ? QStringLiteral("TEAL") : QStringLiteral("NAVY"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), kept ? bytes : NormalisedBytes(SortedDefaults()));
    QFile damaged(DamagedFileOf(program.workingSettingsFile));
    EXPECT_EQ(damaged.open(QIODevice::ReadOnly), !kept);
    if (!kept) {
      EXPECT_EQ(damaged.readAll(), bytes);
    }
  }
}

TEST_F(StartUpTest, TakesAWorkingFileAwayThatWasNeverFilled) {
  MakeFolders();
  ASSERT_TRUE(WriteWholeText(program.workingSettingsFile, QStringLiteral("STARTUP_STATE and more")));
  EXPECT_EQ(Start(), StartUpResult::Running);
  EXPECT_TRUE(Happened().contains(kNotFoundWarning));
  EXPECT_EQ(ReadValue(program.workingSettingsFile, SettingsKey(u"COM_PORT=")), QStringLiteral("NONE"));
  EXPECT_EQ(ReadWholeText(DamagedFileOf(program.workingSettingsFile)),
            QStringLiteral("STARTUP_STATE and more"));
}

TEST_F(StartUpTest, ListsThePorts) {
  ports.present = Adapters(31);
  EXPECT_EQ(Start(), StartUpResult::Running);
  ASSERT_EQ(program.connection.portNames.size(), 31);
  EXPECT_EQ(program.connection.portNames.last(), QStringLiteral("COM31"));
}

}  // namespace
}  // namespace quarn::test
