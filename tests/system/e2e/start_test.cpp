#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include "settings/key_store.h"
#include "system/e2e/starts.h"

namespace quarn::test {
namespace {

constexpr char kDefaultFile[] =
    "\xef\xbb\xbf.VER=Quarn  (Ver. 1.00)\r\n"
    ".BEGIN\r\n"
    "AUTO_CLR=OFF\r\nBK_COLOR=NAVY\r\nCHK_CMD=id\r\nCOM_BITS=8\r\nCOM_BPS=9600\r\nCOM_BUF=1K\r\n"
    "COM_PARITY=None\r\nCOM_PORT=NONE\r\nCOM_STOP=1\r\nDELIMITER=CR\r\nENBL_NULL=OFF\r\nFUNC_KEY=ON\r\n"
    "INPUT_MAX=N\r\nLINE_NUM=OFF\r\nMAIN_POS=TL\r\nMARK_COLOR=WHITE\r\nMEM0=function-1\r\n"
    "MEM1=function-2\r\nMEM2=function-3\r\nMEM3=function-4\r\nMEM4=function-5\r\nMEM5=function-6\r\n"
    "MEM6=function-7\r\nMEM7=function-8\r\nMEM8=function-9\r\nMEM9=function-10\r\nPORT_SPEED=HIGH\r\n"
    "R_TIMEOUT=ON\r\nSTART_DISP=ON\r\n"
    ".END\r\n";

/// Starts on the working settings file, whatever its state.
class Start : public Starts {};

TEST_F(Start, OnAnEmptyAccount) {
  constexpr int kSplashMs = 2000;
  QElapsedTimer sinceStart;
  sinceStart.start();
  StartProgram();
  EXPECT_TRUE(SplashIsThere());
  EXPECT_TRUE(Buttons(kPlain).isEmpty());
  WaitForWindow(kWarning);
  EXPECT_GE(sinceStart.elapsed(), kSplashMs);
  EXPECT_FALSE(FindWindow(kPlain));
  EXPECT_TRUE(desktop.Windows(kMain).isEmpty());
  AcknowledgeDefaults("Initial settings file not found.");
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (NONE)  N- INS")));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_TRUE(StatusBecomes(kInternal));
  EXPECT_TRUE(SwitchBecomes("OFF"));
  EXPECT_EQ(Bytes(SettingsFile()), QByteArray(kDefaultFile));
}

TEST_F(Start, WithAPortThatIsNotThere) {
  WriteSettings({{QStringLiteral("COM_PORT"), QStringLiteral("COM9")}});
  StartProgram();
  Acknowledge(kError, {QStringLiteral("  \"COM9\" is not available."),
                       QStringLiteral("Check \"Detailed COM Port List\".")});
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM9-NC)  N- INS")));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM9-NC)")));
  Focus(terminal);
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  AnswerBox(kError, QStringLiteral("OK"));
}

TEST_F(Start, WithADamagedFile) {
  const QByteArray damaged("\x00\xff no settings at all", 21);
  WriteBytes(SettingsFile(), damaged);
  StartProgram();
  AcknowledgeDefaults("Initial file is invalid.");
  EXPECT_FALSE(WaitForWindow(kTerminal).isEmpty());
  EXPECT_EQ(Bytes(SettingsFile()), QByteArray(kDefaultFile));
  EXPECT_EQ(Bytes(SettingsFile() + QStringLiteral(".damaged")), damaged);
}

TEST_F(Start, WithAnOutdatedFile) {
  const Values values{{QStringLiteral("COM_PORT"), kPort},
                      {QStringLiteral("MEM3"), QStringLiteral("Größe?")}};
  WriteSettings(values);
  ASSERT_TRUE(RemoveKey(SettingsFile(), SettingsKey(u"MARK_COLOR=")));
  ASSERT_TRUE(AddKeyLine(SettingsFile(), QStringLiteral("OLD_KEY=1")));
  const QByteArray outdated = Bytes(SettingsFile());
  PlugIn("* -> line \"OK\"");
  StartProgram();
  EXPECT_TRUE(BoxSays(kWarning, {QStringLiteral("Initial file version is different or corrupt."),
                                 QStringLiteral("Updating configuration settings.")}));
  EXPECT_EQ(Bytes(SettingsFile()), outdated);
  AnswerBox(kWarning, QStringLiteral("OK"));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  EXPECT_EQ(Bytes(SettingsFile()), BytesWith(values));
}

TEST_F(Start, WithAFileThatIsTooLarge) {
  constexpr int kLargestWorkingFile = 16384;
  WriteSettings({{QStringLiteral("COM_PORT"), kPort}});
  const QByteArray good = Bytes(SettingsFile());
  WriteBytes(SettingsFile(), good + QByteArray(kLargestWorkingFile + 1 - good.size(), '\n'));
  StartProgram();
  AcknowledgeDefaults("Initial settings file not found.");
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_EQ(Bytes(SettingsFile()), QByteArray(kDefaultFile));
}

TEST_F(Start, WithAPortNameThatIsNone) {
  WriteSettings({{QStringLiteral("COM_PORT"), QStringLiteral("COM100")}});
  StartProgram();
  AcknowledgeDefaults("Defined port name is invalid.");
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  EXPECT_EQ(Bytes(SettingsFile()), QByteArray(kDefaultFile));
}

TEST_F(Start, WithALinkLoopAndAFolderAmongThePorts) {
  const QString ports = config.filePath(QStringLiteral("Halvo/Quarn/ports/"));
  ASSERT_TRUE(QFile::link(ports + QStringLiteral("COM5"), ports + QStringLiteral("COM4")));
  ASSERT_TRUE(QFile::link(ports + QStringLiteral("COM4"), ports + QStringLiteral("COM5")));
  ASSERT_TRUE(QDir(ports).mkdir(QStringLiteral("COM6")));
  StartConnected("* -> line \"OK\"");
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("id\r"));
}

}  // namespace
}  // namespace quarn::test
