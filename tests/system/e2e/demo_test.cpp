#include <QDir>

#include "system/e2e/option_dialogs.h"

namespace quarn::test {
namespace {

/// The program with its own instrument.
class Demo : public OptionDialogs {
 protected:
  void StartDemo() {
    StartProgram({QStringLiteral("--demo")});
    terminal = WaitForWindow(kTerminal);
    ASSERT_FALSE(terminal.isEmpty());
    EXPECT_TRUE(Title(terminal).contains(QStringLiteral("(COM7)"))) << Title(terminal).toStdString();
    Focus(terminal);
  }
  ::testing::AssertionResult Answers() {
    Type(QStringLiteral("id"));
    Press({QStringLiteral("Return")});
    const auto isThere = [this] {
      return Texts(kTerminal).contains(QStringLiteral("SIM-1 bench instrument, firmware 1.00\r"));
    };
    if (Eventually(isThere)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << Texts(kTerminal).join(QLatin1Char('|')).toStdString();
  }
  QStringList FilesOfUser() {
    return QDir(config.filePath(QStringLiteral("Halvo/Quarn")))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }
};

TEST_F(Demo, AnswersACommandAndTouchesNothingOfTheUsers) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  NoteSettingsFile();
  const QStringList before = FilesOfUser();
  StartDemo();
  EXPECT_TRUE(Answers());
  // A change that is saved at once.
  const QString lineNumber = QStringLiteral("Line Number");
  OpenScreen();
  ClickUntil(kScreen, lineNumber, [&] { return IsChecked(kScreen, lineNumber); });
  PressOk(kScreen);
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_EQ(FilesOfUser(), before);
}

TEST_F(Demo, RunsBesideTheProgram) {
  StartConnected("\"id\" -> line \"the user's\"");
  const auto demo = StartAnother({QStringLiteral("--demo")});
  EXPECT_TRUE(Eventually([this] { return desktop.Windows(kTerminal).size() == 2; }));
  EXPECT_TRUE(instrument->Received().empty());
}

TEST_F(Demo, LeavesNoFolderBehind) {
  const QStringList before = FilesOfUser();
  QTemporaryDir temporary;
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("TMPDIR"), temporary.path());
  program.setProcessEnvironment(environment);
  StartDemo();
  const QDir folder(temporary.path());
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
  ChooseFromMenu(QStringLiteral("File"), QStringLiteral("Exit"));
  EXPECT_TRUE(program.waitForFinished(kLongestWaitMs));
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
  EXPECT_EQ(FilesOfUser(), before);
}

}  // namespace
}  // namespace quarn::test
