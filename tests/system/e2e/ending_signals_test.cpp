#include <signal.h>

#include <QDir>
#include <QFileInfo>
#include <array>

#include "system/e2e/commands.h"
#include "system/e2e/opened_line.h"

namespace quarn::test {
namespace {

/// What is left of a program that a signal ends.
class EndingSignal : public Commands {
 protected:
  const QList<QPair<QString, QString>> kOnlyMain{{QStringLiteral("COM_PORT"), kPort},
                                                 {QStringLiteral("START_DISP"), QStringLiteral("OFF")}};

  /// Makes the instrument's line one whose state is its own.
  void PlugInWithState(std::string_view rules) {
    PlugIn(rules);
    line.emplace(instrument->NodePath());
    ASSERT_TRUE(line->SetSpeed(B4800));
    before = line->State();
  }
  void Signal(int signal) const { ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), signal), 0); }
  ::testing::AssertionResult EndsBy(int signal) {
    if (program.state() != QProcess::NotRunning && !program.waitForFinished(kLongestWaitMs))
      return ::testing::AssertionFailure() << "still running";
    if (program.exitStatus() == QProcess::CrashExit && program.exitCode() == signal)
      return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << (program.exitStatus() == QProcess::CrashExit ? "ended by signal " : "ended with status ")
           << program.exitCode();
  }
  /// The line is as it was, and of the program only what it keeps is there.
  void ExpectNothingLeft(const QByteArray& settings) {
    EXPECT_EQ(line->State(), before);
    EXPECT_EQ(BytesOf(SettingsFile()), settings);
    const auto all = QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot;
    const QString lock = QStringLiteral("Quarn.exe.lock");
    EXPECT_EQ(QDir(runtime.path()).entryList(all).filter(QStringLiteral("Quarn")), QStringList{lock});
    QStringList kept = QDir(QFileInfo(SettingsFile()).path()).entryList(all);
    kept.removeAll(QStringLiteral("ports"));
    EXPECT_EQ(kept, (QStringList{lock, QStringLiteral("Quarn.ini")}));
  }

  std::optional<OpenedLine> line;
  QByteArray before;
};

class EachEndingSignal : public EndingSignal, public ::testing::WithParamInterface<int> {};

TEST_P(EachEndingSignal, PutsTheLineBack) {
  WriteSettings(kOnlyMain);
  PlugInWithState("* -> line \"OK\"");
  const QByteArray settings = BytesOf(SettingsFile());
  StartProgram();
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_NE(line->State(), before);
  Signal(GetParam());
  EXPECT_TRUE(EndsBy(GetParam()));
  ExpectNothingLeft(settings);
}

INSTANTIATE_TEST_SUITE_P(, EachEndingSignal, ::testing::Values(SIGTERM, SIGHUP, SIGINT),
                         [](const auto& tested) { return std::string(::sigabbrev_np(tested.param)); });

TEST_F(EndingSignal, WhileACommandWaitsForItsResponse) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}, {QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")}});
  PlugInWithState("* -> silence");
  const QByteArray settings = BytesOf(SettingsFile());
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  EnterCommand(QStringLiteral("id"));
  ASSERT_TRUE(WireBecomes("id\r"));
  EXPECT_NE(line->State(), before);
  Signal(SIGTERM);
  EXPECT_TRUE(EndsBy(SIGTERM));
  ExpectNothingLeft(settings);
}

TEST_F(EndingSignal, WhileAQuestionIsAsked) {
  WriteSettings(kOnlyMain);
  PlugInWithState("* -> line \"OK\"");
  const QByteArray settings = BytesOf(SettingsFile());
  StartProgram();
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  Choose(kPortMenu, QStringLiteral("Disconnect COM Port"));
  WaitForWindow(kConfirmation);
  EXPECT_NE(line->State(), before);
  Signal(SIGTERM);
  EXPECT_TRUE(EndsBy(SIGTERM));
  ExpectNothingLeft(settings);
}

TEST_F(EndingSignal, WhileAMessageOfTheStartIsShown) {
  WriteSettings(kOnlyMain);
  PlugInWithState("* -> line \"OK\"");
  const QByteArray settings = BytesOf(SettingsFile());
  StartProgram();
  // The line is opened before the message.
  ASSERT_TRUE(Eventually([this] { return line->State() != before; }));
  Signal(SIGTERM);
  EXPECT_TRUE(EndsBy(SIGTERM));
  ExpectNothingLeft(settings);
}

TEST_F(EndingSignal, DuringTheSplashOfTheDemo) {
  const QTemporaryDir temporary;
  QProcessEnvironment environment = program.processEnvironment();
  environment.insert(QStringLiteral("TMPDIR"), temporary.path());
  program.setProcessEnvironment(environment);
  StartProgram({QStringLiteral("--demo")});
  // The splash has no title, but a name.
  ASSERT_TRUE(Eventually([this] { return !Texts(QStringLiteral("^Quarn$")).isEmpty(); }));
  const QDir folder(temporary.path());
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
  Signal(SIGTERM);
  EXPECT_TRUE(EndsBy(SIGTERM));
  EXPECT_EQ(folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
}

TEST_F(EndingSignal, OneThatIsIgnoredStaysIgnored) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  program.start(QStringLiteral("nohup"), {QStringLiteral(QUARN_PROGRAM)});
  terminal = WaitForWindow(kTerminal);
  Signal(SIGHUP);
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
}

}  // namespace
}  // namespace quarn::test
