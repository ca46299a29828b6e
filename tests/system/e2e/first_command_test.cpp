
#include "system/e2e/commands.h"
#include "system/e2e/desktop.h"

namespace quarn::test {
namespace {

class FirstCommand : public EndToEnd {};

TEST_F(FirstCommand, TypedSentAnsweredAndCopied) {
  StartConnected("\"id\" -> line \"SIM-1\"");
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  EXPECT_EQ(instrument->Received(), "id\r");
  EXPECT_EQ(CopiedLog(), QByteArray("[id]\rSIM-1\r"));
  EXPECT_EQ(instrument->Received(), "id\r");
}

TEST_F(FirstCommand, TheDelimiterOfTheSettingsFramesIt) {
  StartConnected("\"id\" -> line \"SIM-1\"", {{QStringLiteral("DELIMITER"), QStringLiteral("STX_ETX")},
                                              {QStringLiteral("LINE_NUM"), QStringLiteral("ON")}});
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  EXPECT_EQ(instrument->Received(), "\x02id\x03");
  EXPECT_EQ(CopiedLog(), QByteArray("   1|  [id]\r   2|  SIM-1\r"));
}

TEST_F(FirstCommand, EscapeEndsTheWaitForASilentDevice) {
  StartConnected("* -> silence", {{QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")}});
  Type(QStringLiteral("mute"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(WireBecomes("mute\r"));
  Press({QStringLiteral("Escape")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-3  ]")));
  EXPECT_EQ(CopiedLog(), QByteArray("[mute]\rWarning: Aborted by ESC Key\r\r"));
}

TEST_F(FirstCommand, EscapeTakesTheEntersTypedAheadWithIt) {
  StartConnected("\"mute\" -> silence\n* -> line \"OK\"",
                 {{QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")}});
  Type(QStringLiteral("mute"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(WireBecomes("mute\r"));
  Press({QStringLiteral("Return"), QStringLiteral("Return"), QStringLiteral("Return"),
         QStringLiteral("Escape")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-3  ]")));
  Press({QStringLiteral("ctrl+z")});
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("mute\rid\r"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-5  ]")));
}

TEST_F(FirstCommand, AnEscapeThatIsHeldDownEndsEveryWaitThatBegins) {
  StartConnected("\"mute\" -> silence\n* -> line \"OK\"",
                 {{QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")}});
  Type(QStringLiteral("mute"));
  desktop.Input({QStringLiteral("keydown"), QStringLiteral("Escape")});
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-3  ]")));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-6  ]")));
  desktop.Input({QStringLiteral("keyup"), QStringLiteral("Escape")});
  Press({QStringLiteral("ctrl+z")});
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("mute\rmute\rid\r"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-8  ]")));
}

TEST_F(FirstCommand, AnEscapeLetGoInAnotherProgramIsNotDownForEver) {
  StartConnected("* -> 1000 line \"OK\"");
  ChildProcess other;
  other.setProcessEnvironment(desktop.Environment());
  other.start(QStringLiteral(QUARN_DRAG_SOURCE), {SettingsFile()});
  const QString window = WaitForWindow(QStringLiteral("^Drag Source$"));
  Focus(terminal);
  desktop.Input({QStringLiteral("keydown"), QStringLiteral("Escape")});
  Focus(window);
  desktop.Input({QStringLiteral("keyup"), QStringLiteral("Escape")});
  Focus(terminal);
  Type(QStringLiteral("id"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  End(other);
}

TEST_F(FirstCommand, WhatIsTypedDuringAWaitComesAfterwards) {
  StartConnected("\"slow\" -> 1500 line \"done\"\n* -> line \"OK\"",
                 {{QStringLiteral("AUTO_CLR"), QStringLiteral("ON")}});
  Type(QStringLiteral("slow"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(WireBecomes("slow\r"));
  Type(QStringLiteral("next"));
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-4  ]")));
  EXPECT_EQ(instrument->Received(), "slow\rnext\r");
  EXPECT_EQ(CopiedLog(), QByteArray("[slow]\rdone\r[next]\rOK\r"));
}

TEST_F(FirstCommand, AClickDuringAWaitLandsWhereItWasMade) {
  StartConnected("\"slow\" -> 1500 line \"done\"\n* -> line \"OK\"",
                 {{QStringLiteral("MEM1"), QStringLiteral("two")}});
  Type(QStringLiteral("slow"));
  Press({QStringLiteral("Return")});
  ASSERT_TRUE(WireBecomes("slow\r"));
  ClickAt(terminal, QPoint(20 + 69 + 30, 639));
  ClickAt(terminal, QPoint(200, 300), 0);
  Press({QStringLiteral("Return")});
  EXPECT_TRUE(WireBecomes("slow\rtwo\r"));
}

class BrokenLine : public Commands {};

TEST_F(BrokenLine, EndsInALogLineAndIsToldAsLost) {
  StartConnected("\"bye\" -> hangup\n* -> line \"OK\"");
  EnterCommand(QStringLiteral("bye"));
  Acknowledge(kError, {QStringLiteral("  \"COM3\" is not available."),
                       QStringLiteral("Check \"Detailed COM Port List\".")});
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3-NC)  N- INS  [ 1-3  ]")));
  EXPECT_EQ(CopiedLog(), QByteArray("[bye]\rError: Received Invalid Data\r\r"));
  EXPECT_EQ(program.state(), QProcess::Running);
}

}  // namespace
}  // namespace quarn::test
