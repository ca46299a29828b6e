#include <QFileInfo>

#include "system/e2e/accessible_windows.h"

namespace quarn::test {
namespace {

/// What a test can do around the program: its folders, its ports, how it is run.
class Account : public AccessibleWindows {};

TEST_F(Account, HasFoldersOfItsOwn) {
  const QProcessEnvironment environment = program.processEnvironment();
  QStringList folders;
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
    folders.push_back(environment.value(QLatin1String(name)));
  EXPECT_EQ(folders.removeDuplicates(), 0);
  for (const QString& each : folders) {
    const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(QFileInfo(each).permissions() & (own | others), own) << each.toStdString();
  }
}

// The program itself adds links for devices that the machine has.

TEST_F(Account, APortIsUnpluggedAndPluggedInAgain) {
  StartConnected("* -> line \"OK\"");
  const QStringList before = portLinks.Names();
  ASSERT_TRUE(before.contains(kPort));
  UnplugPort();
  EXPECT_FALSE(instrument);
  EXPECT_FALSE(portLinks.Names().contains(kPort));
  PlugIn("* -> line \"again\"");
  EXPECT_EQ(portLinks.Names(), before);
  EXPECT_TRUE(QFileInfo::exists(instrument->NodePath()));
  EXPECT_EQ(program.state(), QProcess::Running);
}

TEST_F(Account, MorePortsComeAndGo) {
  constexpr int kMany = 30;
  constexpr int kFirst = 60;
  StartConnected("* -> line \"OK\"");
  const QStringList before = portLinks.Names();
  ASSERT_TRUE(portLinks.AddSilent(kMany, kFirst));
  EXPECT_EQ(portLinks.Names().size(), before.size() + kMany);
  QStringList devices;
  for (int i = kFirst; i < kFirst + kMany; ++i) {
    const QFileInfo link(config.filePath(QStringLiteral("Halvo/Quarn/ports/COM%1").arg(i)));
    EXPECT_TRUE(link.isSymLink() && link.exists()) << i;
    devices.push_back(link.symLinkTarget());
  }
  EXPECT_EQ(devices.removeDuplicates(), 0);
  portLinks.RemoveSilent();
  EXPECT_EQ(portLinks.Names(), before);
}

TEST_F(Account, ARunTellsHowItEnded) {
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  PlugIn("* -> line \"OK\"");
  const std::unique_ptr<ProgramRun> run = StartAnother({QStringLiteral("-title"), QStringLiteral("ignored")});
  ASSERT_FALSE(WaitForWindow(kMain).isEmpty());
  WaitForWindow(kTerminal);
  EXPECT_FALSE(run->WaitForEnd(0));
  ChooseFromMenu(QStringLiteral("File"), QStringLiteral("Exit"));
  const std::optional<ProgramEnd> end = run->WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->crashed);
  EXPECT_EQ(end->exitCode, 0);
  EXPECT_EQ(end->output, QByteArray());
  EXPECT_EQ(end->errors, QByteArray());
}

TEST_F(Account, ARunThatIsBrokenOffSaysWhy) {
  QProcessEnvironment environment = program.processEnvironment();
  ProgramRun shell(QStringLiteral("sh"),
                   {QStringLiteral("-c"), QStringLiteral("echo out; echo err >&2; exit 3")}, environment);
  const std::optional<ProgramEnd> end = shell.WaitForEnd();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->crashed);
  EXPECT_EQ(end->exitCode, 3);
  EXPECT_EQ(end->output, QByteArray("out\n"));
  EXPECT_EQ(end->errors, QByteArray("err\n"));
  ProgramRun none(QStringLiteral("/no/such/program"), {}, environment);
  const std::optional<ProgramEnd> failure = none.WaitForEnd();
  ASSERT_TRUE(failure);
  EXPECT_TRUE(failure->crashed);
}

}  // namespace
}  // namespace quarn::test
