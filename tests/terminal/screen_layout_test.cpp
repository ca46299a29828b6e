#include "terminal/screen_layout.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

SettingsRecord Settings(const char* inputMax = "N", const char* lineNum = "OFF", const char* funcKey = "ON") {
  SettingsRecord settings;
  settings.inputMax = QString::fromLatin1(inputMax);
  settings.lineNum = QString::fromLatin1(lineNum);
  settings.funcKey = QString::fromLatin1(funcKey);
  return settings;
}

TEST(ScreenOptions, TheLimitOfACommandFollowsInputMax) {
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("N")).commandLimit, 48);
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("M")).commandLimit, 56);
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("W")).commandLimit, 64);
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("n")).commandLimit, 0);
  EXPECT_EQ(ScreenWidthOf(QString()).commandLimit, 0);
}

TEST(ScreenOptions, LinesWrapAtTheSameWidth) {
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("N")).lineWidth, 48);
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("M")).lineWidth, 56);
  EXPECT_EQ(ScreenWidthOf(QStringLiteral("W")).lineWidth, 64);
  EXPECT_GT(ScreenWidthOf(QString()).lineWidth, 0);
}

TEST(ScreenLayout, RowsAre18ApartAnd20High) {
  EXPECT_EQ(RowRect(0), QRect(QPoint(22, 35), QPoint(621, 54)));
  EXPECT_EQ(RowRect(31), QRect(22, 35 + 18 * 31, 600, 20));
}

TEST(ScreenLayout, PromptAndCommandLineMoveWithLineNumbers) {
  EXPECT_EQ(PromptText(Settings()), QStringLiteral(">"));
  EXPECT_EQ(PromptText(Settings("N", "ON")), QStringLiteral("LINE   >"));
  EXPECT_EQ(PromptText(Settings("N", "yes")), QStringLiteral(">"));
  EXPECT_EQ(PromptRect(), QRect(22, 12, 600, 20));
  EXPECT_EQ(CommandDisplayRect(Settings()), QRect(32, 12, 600, 20));
  EXPECT_EQ(CommandDisplayRect(Settings("N", "ON")), QRect(87, 12, 600, 20));
}

TEST(ScreenLayout, ButtonsStandInTwoRowsOfSix) {
  const SettingsRecord narrow = Settings();
  EXPECT_EQ(ButtonRect(0, narrow), QRect(20, 628, 60, 22));
  EXPECT_EQ(ButtonRect(5, narrow), QRect(20 + 5 * 69, 628, 60, 22));
  EXPECT_EQ(ButtonRect(6, narrow), QRect(20, 660, 60, 22));
  EXPECT_EQ(ButtonRect(11, narrow), QRect(20 + 5 * 69, 660, 60, 22));
  EXPECT_EQ(ButtonRect(1, Settings("M")), QRect(20 + 79, 628, 70, 22));
  EXPECT_EQ(ButtonRect(1, Settings("W")), QRect(20 + 89, 628, 80, 22));
  EXPECT_EQ(ButtonRect(1, Settings("?")), QRect(20 + 69, 628, 60, 22));
  EXPECT_EQ(ButtonRect(7, Settings("W", "ON")), QRect(45 + 89, 660, 80, 22));
}

TEST(ScreenLayout, TheButtonsAndTheirNumbers) {
  const int ids[] = {1001, 1003, 1006, 1007, 1008, 1004, 1009, 1010, 1011, 1012, 1013, 1005};
  const char16_t* const captions[] = {u"F 1", u"F 2", u"F 3", u"F 4", u"F 5",  u"SEND",
                                      u"F 6", u"F 7", u"F 8", u"F 9", u"F 10", u"CLEAR"};
  const int stored[] = {0, 1, 2, 3, 4, -1, 5, 6, 7, 8, 9, -1};
  for (std::size_t i = 0; i < kTerminalButtons.size(); ++i) {
    EXPECT_EQ(kTerminalButtons[i].controlId, ids[i]);
    EXPECT_EQ(QString::fromUtf16(kTerminalButtons[i].caption), QString::fromUtf16(captions[i]));
    EXPECT_EQ(kTerminalButtons[i].storedCommand, stored[i]);
  }
}

TEST(ScreenLayout, ButtonsAreShownForOnOnly) {
  EXPECT_TRUE(ButtonsShown(Settings()));
  EXPECT_FALSE(ButtonsShown(Settings("N", "OFF", "OFF")));
  EXPECT_FALSE(ButtonsShown(Settings("N", "OFF", "on")));
}

TEST(ScreenLayout, WindowWidths) {
  EXPECT_EQ(TerminalWindowSize(Settings("N"), 100).width(), 460);
  EXPECT_EQ(TerminalWindowSize(Settings("M"), 100).width(), 520);
  EXPECT_EQ(TerminalWindowSize(Settings("W"), 100).width(), 580);
  EXPECT_EQ(TerminalWindowSize(Settings("?"), 100).width(), 535);
  EXPECT_EQ(TerminalWindowSize(Settings("W", "ON"), 100).width(), 630);
  EXPECT_EQ(TerminalWindowSize(Settings("W", "1"), 100).width(), 580);
}

TEST(ScreenLayout, WindowHeightsFollowTheScale) {
  const int rows[][3] = {{100, 740, 675}, {125, 750, 680}, {150, 760, 691},
                         {175, 770, 699}, {200, 740, 657}, {0, 740, 657}};
  for (const auto& row : rows) {
    EXPECT_EQ(TerminalWindowSize(Settings(), row[0]).height(), row[1]) << row[0];
    EXPECT_EQ(TerminalWindowSize(Settings("N", "OFF", "OFF"), row[0]).height(), row[2]) << row[0];
  }
}

TEST(ScreenLayout, Schemes) {
  SettingsRecord settings;
  settings.bkColor = QStringLiteral("NAVY");
  EXPECT_EQ(ColourSchemeOf(settings), ColourScheme::Navy);
  settings.bkColor = QStringLiteral("BLACK");
  EXPECT_EQ(ColourSchemeOf(settings), ColourScheme::Black);
  for (const char* other : {"SYSTEM", "GRAY", "navy", ""}) {
    settings.bkColor = QString::fromLatin1(other);
    EXPECT_EQ(ColourSchemeOf(settings), ColourScheme::System) << other;
  }
  EXPECT_TRUE(IsDark(ColourScheme::Navy));
  EXPECT_TRUE(IsDark(ColourScheme::Black));
  EXPECT_FALSE(IsDark(ColourScheme::System));
}

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
