#include <QDir>
#include <QFile>

#include "e2e/accessible_windows.h"
#include "settings/key_store.h"

namespace quarn::test {
namespace {

class Start : public AccessibleWindows {
 protected:
  void Acknowledge(const QString& titlePattern, const QStringList& texts) {
    EXPECT_TRUE(BoxSays(titlePattern, texts));
    EXPECT_EQ(Buttons(titlePattern), QStringList{QStringLiteral("OK")});
    AnswerBox(titlePattern, QStringLiteral("Return"));
  }
  void AcknowledgeDefaults(const char* why) {
    Acknowledge(QStringLiteral("^Quarn : Warning$"),
                {QLatin1String(why), QStringLiteral("Starting with default settings.")});
    AcknowledgeNoPort();
  }
  void AcknowledgeNoPort() {
    Acknowledge(QStringLiteral("^Quarn : Information$"),
                {QStringLiteral("COM port is undefined."), QStringLiteral("Sellect a COM port to connect.")});
  }
};

TEST_F(Start, OnAnEmptyAccount) {
  StartProgram();
  AcknowledgeDefaults("Initial settings file not found.");
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (NONE)  N- INS")));
  EXPECT_EQ(Title(WaitForWindow(kMain)), QStringLiteral("Quarn   (NONE)"));
  EXPECT_EQ(ReadValue(SettingsFile(), SettingsKey(u"COM_PORT=")), QStringLiteral("NONE"));
}

TEST_F(Start, WithAPortThatIsNotThere) {
  WriteSettings({{QStringLiteral("COM_PORT"), QStringLiteral("COM9")}});
  StartProgram();
  Acknowledge(QStringLiteral("^Quarn : Error$"), {QStringLiteral("  \"COM9\" is not available."),
                                                  QStringLiteral("Check \"Detailed COM Port List\".")});
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM9-NC)  N- INS")));
  Focus(terminal);
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  AnswerBox(QStringLiteral("^Quarn : Error$"), QStringLiteral("OK"));
}

TEST_F(Start, WithADamagedFile) {
  QFile file(SettingsFile());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("\x00\xff no settings at all", 21);
  file.close();
  StartProgram();
  AcknowledgeDefaults("Initial file is invalid.");
  EXPECT_FALSE(WaitForWindow(kTerminal).isEmpty());
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

TEST_F(Start, AgainAfterACrash) {
  StartConnected("* -> line \"OK\"");
  program.kill();
  ASSERT_TRUE(program.waitForFinished(20000));
  StartProgram();
  terminal = WaitForWindow(kTerminal);
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
}

}  // namespace
}  // namespace quarn::test
