#include <QDir>
#include <QDirIterator>

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
  /// All that is in the configuration folder, of every program.
  std::string FilesOfUser() {
    QStringList found;
    QDirIterator each(config.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (each.hasNext()) found.append(QDir(config.path()).relativeFilePath(each.next()));
    found.sort();
    return found.join(QLatin1Char('\n')).toStdString();
  }
};

TEST_F(Demo, AnswersACommandAndTouchesNothingOfTheUsers) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  NoteSettingsFile();
  const std::string before = FilesOfUser();
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
  terminal = WaitForWindow(QStringLiteral("^Quarn - Terminal Screeen \\(COM7\\)"));
  EXPECT_EQ(desktop.Windows(kTerminal).size(), 2);
  Focus(terminal);
  EXPECT_TRUE(Answers());
  EXPECT_TRUE(instrument->Received().empty());
}

TEST_F(Demo, LeavesNothingBehindAfterAFileDialog) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  const std::string before = FilesOfUser();
  ASSERT_FALSE(before.empty());
  QTemporaryDir temporary;
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("TMPDIR"), temporary.path());
  program.setProcessEnvironment(environment);
  StartDemo();
  const QDir folder(temporary.path());
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
  // Qt's own dialog notes where it was and how it looked.
  const QString title = QStringLiteral("^Open Quarn Configuration File$");
  Choose(kFile, QStringLiteral("Open"));
  ASSERT_FALSE(WaitForWindow(title).isEmpty());
  AnswerBox(title, QStringLiteral("Escape"));
  ASSERT_TRUE(WaitForNoWindow(title));
  ChooseFromMenu(kFile, QStringLiteral("Exit"));
  EXPECT_TRUE(program.waitForFinished(kLongestWaitMs));
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
  EXPECT_EQ(FilesOfUser(), before);
}

}  // namespace
}  // namespace quarn::test
