#include <QFile>

#include "settings/key_store.h"
#include "support/small_disk_linux.h"
#include "system/e2e/commands.h"

namespace quarn::test {
namespace {

class Files : public Commands {
 protected:
  /// Starts with a user file in force, connected to COM3.
  void StartWithFile(const QString& path) {
    PlugIn("* -> line \"OK\"");
    StartProgram({path});
    ASSERT_TRUE(FileInForceBecomes(path));
    ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  }
  QString FileWithPort(const QString& name) { return UserFile(name, {{QStringLiteral("COM_PORT"), kPort}}); }
  void ChooseFile(const char* item) { Choose(kFile, QLatin1String(item)); }
  void Open(const QString& path) {
    ChooseFile("Open");
    TypePath(kOpenTitle, path);
  }
  /// Answers the file dialog's own question, whose title is the dialog's.
  void Replace() {
    EXPECT_TRUE(Eventually([this] {
      const QString said = Texts(kSaveAsTitle).join(QLatin1Char(' '));
      return said.contains(QStringLiteral("already exists")) && said.contains(QStringLiteral("replace"));
    })) << Texts(kSaveAsTitle).join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(Eventually([this] {
      Press({QStringLiteral("alt+y")});
      return Eventually([this] { return desktop.Windows(kSaveAsTitle).isEmpty(); }, kOneTryMs);
    }));
  }
  void SaveAsOver(const QString& path) {
    ChooseFile("Save As");
    TypePath(kSaveAsTitle, path, [this] { return desktop.Windows(kSaveAsTitle).size() == 2; });
    Replace();
  }
  bool ItemsForAFileInForce() {
    bool save = false;
    EXPECT_TRUE(Eventually([&] {
      save = MenuItemEnabled(kFile, QStringLiteral("Save"));
      return MenuItemEnabled(kFile, QStringLiteral("Close File")) == save;
    }));
    return save;
  }
  ::testing::AssertionResult HoldsTheSettingsInForce(const QString& path) {
    if (Eventually([&] { return BytesOf(path) == BytesOf(SettingsFile()); }))
      return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << BytesOf(path).toStdString();
  }

  const QString kOpenTitle = QStringLiteral("^Open Quarn Configuration File$");
  const QString kSaveAsTitle = QStringLiteral("^Save As Quarn Configuration File$");
  const QStringList kNotSaved{QStringLiteral("Could not save to the QRN file!"),
                              QStringLiteral("Destination folder error.")};
};

TEST_F(Files, OpenedFileIsInForceAndItsPortConnected) {
  ServedInstrument other("* -> line \"seven\"");
  ASSERT_TRUE(portLinks.Add(QStringLiteral("COM7"), other.NodePath()));
  const QString path =
      UserFile(QStringLiteral("good.qrn"), {{QStringLiteral("COM_PORT"), QStringLiteral("COM7")}});
  const QByteArray bytes = BytesOf(path);
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(StatusBecomes(kInternal));
  ChooseFile("Open");
  AnswerBox(kOpenTitle, QStringLiteral("Escape"));
  EXPECT_TRUE(StatusBecomes(kInternal));
  EXPECT_FALSE(ItemsForAFileInForce());
  Open(path);
  EXPECT_TRUE(Passes(QStringLiteral("QRN file was opened successfully.")));
  EXPECT_TRUE(Passes(QStringLiteral("Successfully Connected to \"COM7\".")));
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM7)")));
  EXPECT_TRUE(Eventually([this] { return ItemsForAFileInForce(); }));
  EXPECT_EQ(BytesOf(SettingsFile()), bytes);
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(Eventually([&] { return other.Received() == "id\r"; })) << other.Received();
  EXPECT_EQ(instrument->Received(), "");
}

TEST_F(Files, OpenAsksWhenSettingsHaveChanged) {
  const QString first = FileWithPort(QStringLiteral("first.qrn"));
  const QString second = FileWithPort(QStringLiteral("second.qrn"));
  StartWithFile(first);
  ChangeSettings();
  const QByteArray changed = BytesOf(SettingsFile());
  ChooseFile("Open");
  Answer(kProceed, kNo);
  EXPECT_TRUE(FileInForceBecomes(first));
  EXPECT_TRUE(desktop.Windows(kOpenTitle).isEmpty());
  EXPECT_EQ(BytesOf(SettingsFile()), changed);
  ChooseFile("Open");
  Answer(kProceed, kYes);
  TypePath(kOpenTitle, second);
  EXPECT_TRUE(FileInForceBecomes(second));
  EXPECT_EQ(BytesOf(SettingsFile()), BytesOf(second));
}

TEST_F(Files, ABrokenFileIsNamedButNotLoaded) {
  const QString path = PathOf(QStringLiteral("broken.qrn"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("no settings at all\n");
  file.close();
  StartWithoutTerminal("* -> line \"OK\"");
  const QByteArray before = BytesOf(SettingsFile());
  Open(path);
  Acknowledge(kError,
              {QStringLiteral("Config file is invalid."), QStringLiteral("Click \"OK\" to quit loading.")});
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_EQ(BytesOf(SettingsFile()), before);
  EXPECT_EQ(BytesOf(path), "no settings at all\n");
}

TEST_F(Files, SaveCopiesTheSettingsInForce) {
  const QString path = FileWithPort(QStringLiteral("mine.qrn"));
  StartWithFile(path);
  ChangeSettings();
  ASSERT_NE(BytesOf(path), BytesOf(SettingsFile()));
  ChooseFile("Save");
  EXPECT_TRUE(HoldsTheSettingsInForce(path));
  EXPECT_EQ(ReadValue(path, SettingsKey(u"MEM3=")), QStringLiteral("changed"));
  ASSERT_TRUE(UpdateValue(SettingsFile(), SettingsKey(u"MEM3="), QStringLiteral("not saved")));
  ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner));
  const QByteArray saved = BytesOf(path);
  const QByteArray inForce = BytesOf(SettingsFile());
  ChooseFile("Save");
  Acknowledge(kError, kNotSaved);
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_EQ(BytesOf(path), saved);
  EXPECT_EQ(BytesOf(SettingsFile()), inForce);
}

TEST_F(Files, SaveAsNamesANewFileAndAsksOnceBeforeReplacingOne) {
  StartWithoutTerminal("* -> line \"OK\"");
  const QString path = PathOf(QStringLiteral("mine.qrn"));
  ChooseFile("Save As");
  WaitForWindow(kSaveAsTitle);
  EXPECT_TRUE(Eventually([this] { return NameInFileDialog(kSaveAsTitle) == u"Untitled.qrn"; }))
      << NameInFileDialog(kSaveAsTitle).toStdString();
  TypePath(kSaveAsTitle, PathOf(QStringLiteral("mine")));
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_EQ(BytesOf(path), BytesOf(SettingsFile()));
  EXPECT_TRUE(Eventually([this] { return ItemsForAFileInForce(); }));
  ChangeSettings();
  SaveAsOver(path);
  EXPECT_TRUE(HoldsTheSettingsInForce(path));
  EXPECT_TRUE(desktop.Windows(QStringLiteral("^Quarn : ")).isEmpty());
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_EQ(QDir(files.path()).entryList(QDir::Files), QStringList{QStringLiteral("mine.qrn")});
}

TEST_F(Files, CloseFileLeavesEverythingButTheName) {
  const QString path = FileWithPort(QStringLiteral("mine.qrn"));
  StartWithFile(path);
  ChangeSettings();
  const QByteArray saved = BytesOf(path);
  const QByteArray inForce = BytesOf(SettingsFile());
  ChooseFile("Close File");
  Answer(kProceed, kNo);
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_TRUE(ItemsForAFileInForce());
  ChooseFile("Close File");
  Answer(kProceed, kYes);
  EXPECT_TRUE(StatusBecomes(kInternal));
  EXPECT_TRUE(Eventually([this] { return !ItemsForAFileInForce(); }));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_EQ(BytesOf(path), saved);
  EXPECT_EQ(BytesOf(SettingsFile()), inForce);
}

TEST_F(Files, RestoreDefaultsGoesThroughItsStepsInOrder) {
  const QStringList sure{QStringLiteral("Are you sure you want to restore the default settings?")};
  const QString path = FileWithPort(QStringLiteral("mine.qrn"));
  FarEnd farEnd;
  ASSERT_TRUE(portLinks.Add(kPort, farEnd.NodePath()));
  StartProgram({path});
  ASSERT_TRUE(FileInForceBecomes(path));
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  ChangeSettings();
  const QByteArray inForce = BytesOf(SettingsFile());
  ChooseFile("Restore Defaults");
  Answer(sure, kNo);
  ChooseFile("Restore Defaults");
  Answer(sure, kYes);
  Answer(kProceed, kNo);
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_EQ(BytesOf(SettingsFile()), inForce);
  EXPECT_FALSE(farEnd.HungUp());
  ChooseFile("Restore Defaults");
  Answer(sure, kYes);
  Answer(kProceed, kYes);
  EXPECT_TRUE(Passes(QStringLiteral("Loaded the initial default settings.")));
  EXPECT_TRUE(farEnd.HungUp());
  EXPECT_EQ(BytesOf(SettingsFile()), BytesOf(UserFile(QStringLiteral("defaults.qrn"), {})));
  Acknowledge(kInformation,
              {QStringLiteral("COM port is undefined."), QStringLiteral("Sellect a COM port to connect.")});
  EXPECT_TRUE(StatusBecomes(kInternal));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_FALSE(WaitForWindow(QStringLiteral("^Quarn - Terminal Screeen \\(NONE\\)  N- INS$")).isEmpty());
  EXPECT_TRUE(PortItemsBecome(false, false, false));
  EXPECT_FALSE(ItemsForAFileInForce());
}

/// The disk is mounted before anything else is started, while this process has one thread.
struct HasSmallDisk {
  SmallDisk disk;
};

class FilesOnFullDisk : public HasSmallDisk, public Files {};

TEST_F(FilesOnFullDisk, SaveAsLosesNothing) {
  const QString path = FileWithPort(QStringLiteral("mine.qrn"));
  const QString old = disk.Path(QStringLiteral("old.qrn"));
  ASSERT_TRUE(QFile::copy(UserFile(QStringLiteral("other.qrn"), {}), old));
  const QByteArray oldBytes = BytesOf(old);
  disk.Fill();
  StartWithFile(path);
  ChangeSettings();
  const QByteArray saved = BytesOf(path);
  const QByteArray inForce = BytesOf(SettingsFile());
  ChooseFile("Save As");
  EXPECT_TRUE(Eventually([this] { return NameInFileDialog(kSaveAsTitle) == u"mine.qrn"; }))
      << NameInFileDialog(kSaveAsTitle).toStdString();
  TypePath(kSaveAsTitle, disk.Path(QStringLiteral("new.qrn")));
  Acknowledge(kError, kNotSaved);
  SaveAsOver(old);
  Acknowledge(kError, kNotSaved);
  EXPECT_TRUE(FileInForceBecomes(path));
  EXPECT_EQ(BytesOf(old), oldBytes);
  EXPECT_EQ(BytesOf(path), saved);
  EXPECT_EQ(BytesOf(SettingsFile()), inForce);
  EXPECT_EQ(disk.Files(), (QStringList{QStringLiteral("filler"), QStringLiteral("old.qrn")}));
}

}  // namespace
}  // namespace quarn::test
