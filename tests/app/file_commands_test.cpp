#include "app/file_commands_fixture.h"

namespace quarn::test {
namespace {

TEST_F(FileCommandsTest, OpenAsksLoadsConnectsAndPutsTheFileInForce) {
  chooser.answer = WithPort("COM3");
  commands->Open();
  ASSERT_EQ(chooser.opened.size(), 1);
  EXPECT_EQ(chooser.opened[0].title, QStringLiteral("Open Quarn Configuration File"));
  EXPECT_EQ(chooser.opened[0].filters, (QStringList{QStringLiteral("QRN Files (*.qrn) (*.qrn)"),
                                                    QStringLiteral("All Files (*.*) (*)")}));
  EXPECT_EQ(chooser.opened[0].suffix, QStringLiteral("qrn"));
  EXPECT_EQ(chooser.opened[0].initialName, QString());
  EXPECT_EQ(chooser.opened[0].folder, QString());
  EXPECT_EQ(messages->shown, (QStringList{kOpened, Connected("COM3")}));
  EXPECT_EQ(program->userFile, chooser.answer);
  EXPECT_TRUE(program->fileLoaded);
  EXPECT_EQ(program->settings.comPort, QStringLiteral("COM3"));
  EXPECT_EQ(program->state.currentPortName, QStringLiteral("COM3"));
  EXPECT_TRUE(program->connection.connected.IsSet());
  EXPECT_EQ(WorkingBytes(), BytesOf(chooser.answer));
  EXPECT_EQ(calls, (QStringList{QStringLiteral("user file ") + chooser.answer,
                                QStringLiteral("menu state ") + chooser.answer}));
  EXPECT_TRUE(AllWindowsAreToldOfTheSettings());
  EXPECT_TRUE(Requests().clearLog);
}

TEST_F(FileCommandsTest, LoadingClosesTheOldPortBeforeTheNewOneIsOpened) {
  const std::size_t before = journal.Entries().size();
  EXPECT_NE(LoadUserFile(*program, WithPort("COM3")), QString());
  const auto entries = journal.Entries();
  ASSERT_GT(entries.size(), before + 1);
  EXPECT_EQ(entries[before], "close");
  EXPECT_NE(entries[before + 1].find("COM3"), std::string::npos) << entries[before + 1];
}

/// It would compare the ports with those of the settings before, and write the former port into the new file.
TEST_F(FileCommandsTest, ThePortMonitorRestsUntilTheFilesPortIsConnected) {
  int shown = 0;
  messages->whileShown = [&] {
    ++shown;
    EXPECT_TRUE(program->state.portBeingChanged);
  };
  EXPECT_NE(LoadUserFile(*program, WithPort("COM3")), QString());
  EXPECT_EQ(shown, 2);
  EXPECT_FALSE(program->state.portBeingChanged);
}

TEST_F(FileCommandsTest, AFileThatNamesNoPortLeavesTheProgramUnconnected) {
  EXPECT_NE(LoadUserFile(*program, WithPort("NONE")), QString());
  EXPECT_EQ(messages->shown, (QStringList{kOpened, kUndefined}));
  EXPECT_FALSE(program->connection.connected.IsSet());
  EXPECT_TRUE(program->connection.handle.IsNull());
  EXPECT_EQ(program->state.currentPortName, QStringLiteral("NONE"));
}

TEST_F(FileCommandsTest, AFileThatNamesAnAbsentPortIsLoadedAllTheSame) {
  chooser.answer = WithPort("COM9");
  commands->Open();
  EXPECT_EQ(messages->shown, (QStringList{kOpened, NotAvailable("COM9")}));
  EXPECT_FALSE(program->connection.connected.IsSet());
  EXPECT_EQ(program->state.currentPortName, QStringLiteral("COM9"));
  EXPECT_TRUE(program->fileLoaded);
}

TEST_F(FileCommandsTest, OpenPutsAFileInForceThatCouldNotBeLoaded) {
  const QByteArray bytes = WorkingBytes();
  const SettingsRecord record = program->settings;
  chooser.answer = WithPort("COM100");
  commands->Open();
  EXPECT_EQ(messages->shown, QStringList{kNotLoaded});
  EXPECT_EQ(program->userFile, chooser.answer);
  EXPECT_FALSE(program->fileLoaded);
  EXPECT_EQ(WorkingBytes(), bytes);
  EXPECT_EQ(program->settings, record);
  EXPECT_FALSE(Requests().clearLog);
  EXPECT_TRUE(program->connection.connected.IsSet());
  EXPECT_FALSE(WasClosed());
  EXPECT_EQ(calls, (QStringList{QStringLiteral("user file ") + chooser.answer,
                                QStringLiteral("menu state ") + chooser.answer}));
}

TEST_F(FileCommandsTest, ACancelledOpenChangesNothing) {
  const QString inForce = InForce();
  commands->Open();
  EXPECT_EQ(chooser.opened.size(), 1);
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(program->userFile, inForce);
  EXPECT_EQ(calls, QStringList());
}

TEST_F(FileCommandsTest, NoAbandonsEveryCommandThatWouldLoseChanges) {
  const QString inForce = InForceAndChanged();
  const QByteArray working = WorkingBytes();
  const QByteArray user = BytesOf(inForce);
  chooser.answer = WithPort("COM3");
  messages->answers = {false, false, false, true, false};
  commands->Open();
  commands->CloseFile();
  commands->DropFiles({chooser.answer});
  commands->RestoreDefaults();
  EXPECT_EQ(messages->shown, (QStringList{kProceed, kProceed, kProceed, kRestore, kProceed}));
  EXPECT_EQ(chooser.opened.size(), 0);
  EXPECT_EQ(program->userFile, inForce);
  EXPECT_EQ(WorkingBytes(), working);
  EXPECT_EQ(BytesOf(inForce), user);
  EXPECT_EQ(program->settings.comPort, QStringLiteral("COM7"));
  EXPECT_TRUE(program->connection.connected.IsSet());
  EXPECT_FALSE(Requests().close.Contains(Window::TerminalScreen));
  EXPECT_EQ(calls, QStringList());
}

TEST_F(FileCommandsTest, YesGoesOn) {
  InForceAndChanged();
  messages->answers = {true};
  chooser.answer = WithPort("COM3");
  commands->Open();
  EXPECT_EQ(messages->shown, (QStringList{kProceed, kOpened, Connected("COM3")}));
  EXPECT_EQ(program->userFile, chooser.answer);
}

TEST_F(FileCommandsTest, NothingIsAskedInTheInternalStateOrWithoutAChange) {
  chooser.answer = WithPort("COM7");
  commands->DropFiles({chooser.answer});
  commands->Open();
  commands->CloseFile();
  EXPECT_EQ(messages->shown, (QStringList{kOpened, Connected("COM7"), kOpened, Connected("COM7")}));
  EXPECT_TRUE(commands->MayExit());
}

TEST_F(FileCommandsTest, SaveCopiesTheWorkingFile) {
  const QString inForce = InForceAndChanged();
  commands->Save();
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(BytesOf(inForce), WorkingBytes());
  EXPECT_EQ(program->userFile, inForce);
  EXPECT_TRUE(commands->MayExit());
}

TEST_F(FileCommandsTest, SaveNeedsAUserFile) {
  const QStringList files = FilesInFolder();
  commands->Save();
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(FilesInFolder(), files);
}

TEST_F(FileCommandsTest, AFailedSaveChangesNothing) {
  program->userFile = Path(QStringLiteral("gone/user.qrn"));
  const QByteArray working = WorkingBytes();
  commands->Save();
  EXPECT_EQ(messages->shown, QStringList{kNotSaved});
  EXPECT_EQ(program->userFile, Path(QStringLiteral("gone/user.qrn")));
  EXPECT_EQ(WorkingBytes(), working);
}

TEST_F(FileCommandsTest, AReadOnlyUserFileIsNotSavedTo) {
  const QString inForce = InForceAndChanged();
  const QByteArray user = BytesOf(inForce);
  ASSERT_TRUE(QFile::setPermissions(inForce, QFile::ReadOwner));
  commands->Save();
  chooser.answer = inForce;
  commands->SaveAs();
  EXPECT_EQ(messages->shown, (QStringList{kNotSaved, kNotSaved}));
  EXPECT_EQ(BytesOf(inForce), user);
}

TEST_F(FileCommandsTest, SaveAsCopiesWithoutAFurtherQuestionAndPutsTheFileInForce) {
  chooser.answer = WithBytes("old", QStringLiteral("new.qrn"));
  commands->SaveAs();
  ASSERT_EQ(chooser.saved.size(), 1);
  EXPECT_EQ(chooser.saved[0].title, QStringLiteral("Save As Quarn Configuration File"));
  EXPECT_EQ(chooser.saved[0].filters, (QStringList{QStringLiteral("QRN Files (*.qrn) (*.qrn)"),
                                                   QStringLiteral("All files (*.*) (*)")}));
  EXPECT_EQ(chooser.saved[0].suffix, QStringLiteral("qrn"));
  EXPECT_EQ(chooser.saved[0].initialName, QStringLiteral("Untitled.qrn"));
  EXPECT_EQ(chooser.saved[0].folder, QString());
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(BytesOf(chooser.answer), WorkingBytes());
  EXPECT_EQ(program->userFile, chooser.answer);
  EXPECT_EQ(calls, QStringList{QStringLiteral("user file ") + chooser.answer});
  EXPECT_TRUE(Requests().refresh.Contains(Window::MainDialog));
}

TEST_F(FileCommandsTest, SaveAsProposesTheFileInForceAndAsksNothingAboutChanges) {
  const QString inForce = InForceAndChanged();
  commands->SaveAs();
  EXPECT_EQ(chooser.saved.value(0).initialName, inForce);
  EXPECT_EQ(chooser.saved.value(0).folder, QFileInfo(inForce).absolutePath());
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(program->userFile, inForce);
}

TEST_F(FileCommandsTest, AFailedSaveAsChangesNothing) {
  const QString inForce = InForceAndChanged();
  const QByteArray working = WorkingBytes();
  const QString folder = Path(QStringLiteral("folder.qrn"));
  ASSERT_TRUE(QDir().mkdir(folder));
  for (const QString& target : {folder, Path(QStringLiteral("gone/x.qrn")), program->workingSettingsFile}) {
    messages->shown.clear();
    chooser.answer = target;
    commands->SaveAs();
    EXPECT_EQ(messages->shown, QStringList{kNotSaved}) << target.toStdString();
    EXPECT_EQ(program->userFile, inForce);
    EXPECT_EQ(WorkingBytes(), working);
  }
  EXPECT_EQ(calls, QStringList());
  EXPECT_TRUE(QDir(folder).isEmpty());
}

TEST_F(FileCommandsTest, CloseFileLeavesTheSettingsAndTheConnection) {
  InForceAndChanged();
  const QByteArray working = WorkingBytes();
  messages->answers = {true};
  commands->CloseFile();
  EXPECT_EQ(messages->shown, QStringList{kProceed});
  EXPECT_EQ(program->userFile, QString());
  EXPECT_EQ(calls, (QStringList{QStringLiteral("menu state "), QStringLiteral("user file ")}));
  EXPECT_EQ(WorkingBytes(), working);
  EXPECT_EQ(program->settings.comPort, QStringLiteral("COM7"));
  EXPECT_TRUE(program->connection.connected.IsSet());
  EXPECT_FALSE(WasClosed());
}

TEST_F(FileCommandsTest, RestoreDefaultsAnsweredNoDoesNothing) {
  const QByteArray working = WorkingBytes();
  commands->RestoreDefaults();
  EXPECT_EQ(messages->shown, QStringList{kRestore});
  EXPECT_EQ(WorkingBytes(), working);
  EXPECT_FALSE(Requests().clearLog);
  EXPECT_TRUE(program->connection.connected.IsSet());
}

TEST_F(FileCommandsTest, RestoreDefaultsStartsOverAndKeepsTheUserFileOnDisk) {
  const QString inForce = InForceAndChanged();
  const QByteArray user = BytesOf(inForce);
  program->settings.loadedMarker = QStringLiteral("TRUE");
  messages->answers = {true, true};
  QStringList seen;
  messages->whileShown = [&] {
    seen.append(QStringLiteral("%1 %2 %3")
                    .arg(WasClosed() ? 1 : 0)
                    .arg(program->settings.comPort,
                         program->userFile.isEmpty() ? QStringLiteral("-") : QStringLiteral("file")));
  };
  commands->RestoreDefaults();
  EXPECT_EQ(messages->shown, (QStringList{kRestore, kProceed, kRestored, kUndefined}));
  EXPECT_EQ(seen, (QStringList{QStringLiteral("0 COM7 file"), QStringLiteral("0 COM7 file"),
                               QStringLiteral("1 NONE -"), QStringLiteral("1 NONE -")}));
  EXPECT_EQ(WorkingBytes(), NormalisedBytes(SortedDefaults()));
  SettingsRecord written;
  written.loadedMarker = QStringLiteral("TRUE");
  ASSERT_EQ(LoadSettings(program->workingSettingsFile, written), LoadResult::Loaded);
  EXPECT_EQ(program->settings, written);
  EXPECT_EQ(program->state.currentPortName, QStringLiteral("NONE"));
  EXPECT_FALSE(program->connection.connected.IsSet());
  EXPECT_TRUE(program->connection.handle.IsNull());
  EXPECT_EQ(BytesOf(inForce), user);
  EXPECT_EQ(calls, (QStringList{QStringLiteral("user file "), QStringLiteral("terminal")}));
}

TEST_F(FileCommandsTest, RestoreDefaultsAsksEveryOtherWindowToCloseButShowsTheTerminalScreen) {
  messages->answers = {true};
  messages->whileShown = [this] {
    if (messages->shown.last() != kRestored) return;
    EXPECT_TRUE(Requests().close.Contains(Window::TerminalScreen));
    // As the Terminal Screen does in its tick.
    Requests().close.Remove(Window::TerminalScreen);
  };
  commands->RestoreDefaults();
  const WindowRequests& requests = Requests();
  EXPECT_TRUE(
      requests.close.Contains(Window::PortNumber) && requests.close.Contains(Window::DetailedPortList) &&
      requests.close.Contains(Window::CommandFormat) && requests.close.Contains(Window::ScreenOption) &&
      requests.close.Contains(Window::MainOption) && requests.close.Contains(Window::FunctionKeyTable));
  EXPECT_TRUE(AllWindowsAreToldOfTheSettings());
  EXPECT_TRUE(requests.clearLog);
  EXPECT_FALSE(requests.close.Contains(Window::TerminalScreen));
  EXPECT_TRUE(requests.focus);
}

TEST_F(FileCommandsTest, RestoreDefaultsWithAScreenThatIsNotWantedAsksItToClose) {
  messages->answers = {true};
  messages->whileShown = [this] {
    if (messages->shown.last() == kUndefined) program->settings.startDisp = QStringLiteral("OFF");
  };
  commands->RestoreDefaults();
  EXPECT_TRUE(Requests().close.Contains(Window::TerminalScreen));
  EXPECT_FALSE(Requests().focus);
  EXPECT_EQ(calls, QStringList{QStringLiteral("user file ")});
}

TEST_F(FileCommandsTest, DefaultsThatCannotBeWrittenAreStillInForce) {
  ASSERT_TRUE(QFile::setPermissions(program->workingSettingsFile, QFile::ReadOwner));
  const QByteArray working = WorkingBytes();
  messages->answers = {true};
  commands->RestoreDefaults();
  EXPECT_EQ(program->settings.comPort, QStringLiteral("NONE"));
  EXPECT_EQ(WorkingBytes(), working);
}

TEST_F(FileCommandsTest, ADropLoadsOnlyTheFirstFile) {
  const QString first = WithPort("COM3", QStringLiteral("first.qrn"));
  commands->DropFiles(
      {first, WithPort("COM7", QStringLiteral("second.qrn")), WithPort("COM9", QStringLiteral("third.qrn"))});
  EXPECT_EQ(messages->shown, (QStringList{kOpened, Connected("COM3")}));
  EXPECT_EQ(program->userFile, first);
  EXPECT_TRUE(program->fileLoaded);
  EXPECT_TRUE(AllWindowsAreToldOfTheSettings());
  EXPECT_TRUE(Requests().clearLog);
  EXPECT_EQ(calls, QStringList{QStringLiteral("user file ") + first});
}

TEST_F(FileCommandsTest, AFailedDropLeavesNoFileInForce) {
  InForce();
  commands->DropFiles({Path(QStringLiteral("missing.qrn"))});
  EXPECT_EQ(messages->shown, QStringList{kFileNotFound});
  EXPECT_FALSE(Requests().clearLog);
  EXPECT_EQ(program->userFile, QString());
  EXPECT_FALSE(program->fileLoaded);
  EXPECT_TRUE(program->connection.connected.IsSet());
  EXPECT_EQ(calls, QStringList{QStringLiteral("user file ")});
}

TEST_F(FileCommandsTest, ADropOfNothingIsNoDrop) {
  const QString inForce = InForceAndChanged();
  commands->DropFiles({});
  EXPECT_EQ(messages->shown, QStringList());
  EXPECT_EQ(program->userFile, inForce);
}

TEST_F(FileCommandsTest, ExitAsksOnlyAboutChangesToAUserFile) {
  EXPECT_TRUE(commands->MayExit());
  InForce();
  EXPECT_TRUE(commands->MayExit());
  EXPECT_EQ(messages->shown, QStringList());
  InForceAndChanged();
  messages->answers = {false, true};
  EXPECT_FALSE(commands->MayExit());
  EXPECT_TRUE(commands->MayExit());
  EXPECT_EQ(messages->shown, (QStringList{kExit, kExit}));
}

TEST_F(FileCommandsTest, ACommandWithinACommandIsIgnored) {
  const QString inForce = InForceAndChanged();
  const auto everything = [this] {
    commands->Open();
    commands->Save();
    commands->SaveAs();
    commands->CloseFile();
    commands->RestoreDefaults();
    commands->DropFiles({WithPort("COM3")});
    EXPECT_FALSE(commands->MayExit());
  };
  messages->whileShown = everything;
  messages->answers = {true};
  chooser.whileShown = everything;
  const QByteArray user = BytesOf(inForce);
  commands->Open();
  EXPECT_EQ(messages->shown, QStringList{kProceed});
  EXPECT_EQ(chooser.opened.size(), 1);
  EXPECT_EQ(chooser.saved.size(), 0);
  EXPECT_EQ(program->userFile, inForce);
  EXPECT_EQ(BytesOf(inForce), user);
  // And the next one is taken again.
  messages->whileShown = nullptr;
  chooser.whileShown = nullptr;
  commands->Save();
  EXPECT_EQ(BytesOf(inForce), WorkingBytes());
}

}  // namespace
}  // namespace quarn::test
