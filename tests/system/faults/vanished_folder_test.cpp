#include "app/file_commands_fixture.h"
#include "settings/working_file.h"
#include "system/faults/fault_run.h"

namespace quarn::test {
namespace {

const QString kInvalid =
    QStringLiteral("error/: Error//Config file is invalid./Click \"OK\" to quit loading.");
const QString kFolderError =
    QStringLiteral("error/: Error//Destination folder error!/Could not open the QRN file.");

/// Removes the folder of the settings or of the user file, with its content: before an operation, and before
/// each of its system calls.
class VanishedFolder : public FileCommandsTest {
 protected:
  [[nodiscard]] QString SettingsFolder() const { return Path(QString()); }
  [[nodiscard]] QString UserFolder() const { return m_users.path(); }
  [[nodiscard]] QString UserPath(const char* name = "user.qrn") const {
    return m_users.filePath(QLatin1String(name));
  }
  static QByteArray PortBytes(const char* port) {
    return NormalisedBytes(SortedDefaults()).replace("COM_PORT=NONE", QByteArray("COM_PORT=") + port);
  }
  static void Put(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  static void Vanish(const QString& folder) { ASSERT_TRUE(QDir(folder).removeRecursively()); }
  /// Both folders during normal use: COM7 is the current port, and a user file has COM3.
  void Afresh() {
    for (const QString& folder : {SettingsFolder(), UserFolder()}) {
      Vanish(folder);
      ASSERT_TRUE(QDir().mkpath(folder));
    }
    WithPort("COM7", QStringLiteral("Quarn.ini"));
    Put(UserPath(), PortBytes("COM3"));
    ASSERT_EQ(LoadSettings(program->workingSettingsFile, program->settings), LoadResult::Loaded);
    program->userFile = UserPath();
    messages->shown.clear();
  }
  /// Runs the operation with this folder removed at each point. `check` gets whether it existed all the time.
  template <class Act, class Check>
  void Play(const char* name, const QString& vanishing, const Act& act, const Check& check) {
    const auto whole = [&](const Fault& fault) {
      EXPECT_EQ(QFileInfo::exists(vanishing), !fault.struck) << "nobody makes the folder anew";
      check(!fault.struck);
    };
    // Both are below the folder for temporary files.
    const std::string place = QFile::encodeName(QDir::tempPath()).toStdString();
    FaultRun run(
        name, place, [this] { Afresh(); }, act, whole);
    run.PlayEvent([&] { Vanish(vanishing); });
  }
  /// The remaining file is complete, and the current settings are those of the file.
  void ExpectKept(const QString& path, const char* port) const {
    EXPECT_EQ(BytesOf(path), PortBytes(port));
    EXPECT_EQ(program->settings.comPort, QLatin1String("COM7"));
    EXPECT_EQ(program->userFile, UserPath());
  }
  void ExpectSavedOrTold(bool there) const {
    const bool told = messages->shown == QStringList{kNotSaved};
    EXPECT_TRUE(told || messages->shown.isEmpty()) << messages->shown.join(u'\n').toStdString();
    EXPECT_FALSE(told && there);
  }
  void ExpectOpenedOrTold(bool there) const {
    const bool opened = messages->shown == QStringList{kOpened, Connected("COM3")};
    EXPECT_EQ(program->settings.comPort, QLatin1String(opened ? "COM3" : "COM7"));
    EXPECT_TRUE(opened || !there);
    if (opened) return;
    ASSERT_EQ(messages->shown.size(), 1) << messages->shown.join(u'\n').toStdString();
    EXPECT_TRUE((QStringList{kFileNotFound, kInvalid, kFolderError, kNotLoaded}).contains(messages->shown[0]))
        << messages->shown[0].toStdString();
  }

 private:
  QTemporaryDir m_users;
};

TEST_F(VanishedFolder, AnOptionStaysInForceAndNothingIsSaid) {
  const auto act = [this] {
    EXPECT_TRUE(UpdateValue(program->workingSettingsFile, keys::kComBps, QStringLiteral("19200")));
  };
  Play("an option, its folder gone", SettingsFolder(), act, [this](bool) { ExpectKept(UserPath(), "COM3"); });
}

TEST_F(VanishedFolder, SaveWithoutTheSettingsLeavesTheUserFile) {
  const auto save = [this] { commands->Save(); };
  Play("Save, the settings gone", SettingsFolder(), save, [this](bool there) {
    ExpectSavedOrTold(there);
    ExpectKept(UserPath(), messages->shown.isEmpty() ? "COM7" : "COM3");
  });
}

TEST_F(VanishedFolder, SaveWithoutTheUsersFolderKeepsTheSettings) {
  const auto save = [this] { commands->Save(); };
  Play("Save, the user's folder gone", UserFolder(), save, [this](bool there) {
    ExpectSavedOrTold(there);
    ExpectKept(program->workingSettingsFile, "COM7");
    // The question about unsaved settings comes.
    messages->shown.clear();
    messages->answers = {false};
    EXPECT_EQ(commands->MayExit(), there);
    EXPECT_EQ(messages->shown, there ? QStringList() : QStringList{kExit});
  });
}

TEST_F(VanishedFolder, SaveAsIntoItIsRefusedAndTheFormerFileStaysInForce) {
  chooser.answer = UserPath("other.qrn");
  const auto saveAs = [this] { commands->SaveAs(); };
  Play("Save As, the user's folder gone", UserFolder(), saveAs, [this](bool there) {
    ExpectSavedOrTold(there);
    EXPECT_EQ(program->userFile, messages->shown.isEmpty() ? chooser.answer : UserPath());
    EXPECT_EQ(WorkingBytes(), PortBytes("COM7"));
  });
}

TEST_F(VanishedFolder, OpenWithoutTheUsersFolderIsAllOrNothing) {
  chooser.answer = UserPath();
  const auto open = [this] {
    program->userFile.clear();
    commands->Open();
  };
  Play("Open, the user's folder gone", UserFolder(), open, [this](bool there) {
    ExpectOpenedOrTold(there);
    EXPECT_EQ(WorkingBytes(), PortBytes(program->settings.comPort == u"COM3" ? "COM3" : "COM7"));
  });
}

TEST_F(VanishedFolder, OpenWithoutTheSettingsFolderIsAllOrNothing) {
  chooser.answer = UserPath();
  const auto open = [this] {
    program->userFile.clear();
    commands->Open();
  };
  Play("Open, the settings gone", SettingsFolder(), open, [this](bool there) {
    ExpectOpenedOrTold(there);
    EXPECT_EQ(BytesOf(UserPath()), PortBytes("COM3"));
  });
}

TEST_F(VanishedFolder, TheDefaultsAreInForceWithoutTheSettingsFolder) {
  const auto restore = [this] {
    program->userFile.clear();
    messages->answers = {true};
    commands->RestoreDefaults();
  };
  Play("Restore Defaults, the settings gone", SettingsFolder(), restore, [this](bool) {
    EXPECT_EQ(messages->shown, (QStringList{kRestore, kRestored, kUndefined}));
    EXPECT_EQ(program->settings.comPort, QLatin1String("NONE"));
  });
}

TEST_F(VanishedFolder, TheStartEndsWithTheSettingsOrTheDefaults) {
  const auto start = [this] {
    LoadInitialSettings(program->workingSettingsFile, program->settings, *messages);
  };
  const QString warning = QStringLiteral("information/: Warning//%1/Starting with default settings.");
  const QString notFound = warning.arg(QStringLiteral("Initial settings file not found."));
  const QString invalid = warning.arg(QStringLiteral("Initial file is invalid."));
  const QString badPort = warning.arg(QStringLiteral("Defined port name is invalid."));
  Play("start, the settings gone", SettingsFolder(), start, [&](bool there) {
    EXPECT_EQ(program->settings.loadedMarker, QLatin1String("TRUE"));
    if (messages->shown.isEmpty()) {
      EXPECT_EQ(program->settings.comPort, QLatin1String("COM7"));
    } else {
      EXPECT_FALSE(there);
      EXPECT_TRUE((QStringList{notFound, invalid, badPort}).contains(messages->shown.first()));
      EXPECT_EQ(messages->shown.last(), badPort) << "not even the defaults could be loaded";
      EXPECT_EQ(program->settings.comPort, QLatin1String("NONE"));
    }
    EXPECT_EQ(BytesOf(UserPath()), PortBytes("COM3"));
  });
}

}  // namespace
}  // namespace quarn::test
