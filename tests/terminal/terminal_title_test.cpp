#include "terminal/terminal_title.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

const QString kN = QStringLiteral("N");
const QString kCom3 = QStringLiteral("COM3");

TEST(TerminalTitle, NamesThePort) {
  const OperationLog log;
  EXPECT_EQ(TerminalTitle(kCom3, true, kN, false, log),
            QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS"));
  EXPECT_EQ(TerminalTitle(kCom3, false, kN, false, log),
            QStringLiteral("Quarn - Terminal Screeen (COM3-NC)  N- INS"));
  EXPECT_EQ(TerminalTitle(QStringLiteral("NONE"), false, kN, false, log),
            QStringLiteral("Quarn - Terminal Screeen (NONE)  N- INS"));
}

TEST(TerminalTitle, ShowsWidthAndMode) {
  const OperationLog log;
  EXPECT_EQ(TerminalTitle(kCom3, true, QStringLiteral("W"), true, log),
            QStringLiteral("Quarn - Terminal Screeen (COM3)  W- OVR"));
  EXPECT_EQ(TerminalTitle(kCom3, true, QStringLiteral("X"), false, log),
            QStringLiteral("Quarn - Terminal Screeen (COM3)  - INS"));
}

TEST(TerminalTitle, ShowsThePositionWhileTheLogHasContent) {
  OperationLog log;
  log.AppendLogText("[id]\rOK\r");
  EXPECT_EQ(TerminalTitle(kCom3, true, kN, false, log),
            QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]"));
  log.ScrollLogDown();
  EXPECT_TRUE(TerminalTitle(kCom3, true, kN, false, log).endsWith(QStringLiteral("  [ 2-2  ]")));
  log.ResetLog();
  EXPECT_TRUE(TerminalTitle(kCom3, true, kN, false, log).endsWith(QStringLiteral("INS")));
}

}  // namespace
}  // namespace quarn
