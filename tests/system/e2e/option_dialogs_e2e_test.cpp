#include "system/e2e/option_dialogs.h"

namespace quarn::test {
namespace {

TEST_F(OptionDialogs, EveryCommandFormatIsWrittenAndUsed) {
  StartConnected("* -> line \"OK\"");
  OpenFormat();
  NoteSettingsFile();
  Change(kFormat, "Max Receive Buffer Size 2048", true, "COM_BUF", "2K");
  Change(kFormat, "Max Receive Buffer Size 6144", true, "COM_BUF", "6K");
  Change(kFormat, "Max Receive Buffer Size 1024", true, "COM_BUF", "1K");
  Change(kFormat, "Port Speed LOW", true, "PORT_SPEED", "LOW");
  Change(kFormat, "Port Speed HIGH", true, "PORT_SPEED", "HIGH");
  Change(kFormat, "Apply Response Timeout", false, "R_TIMEOUT", "OFF");
  Change(kFormat, "Apply Response Timeout", true, "R_TIMEOUT", "ON");
  Change(kFormat, "Delimiter STX / ETX", true, "DELIMITER", "STX_ETX");
  Change(kFormat, "Delimiter LF", true, "DELIMITER", "LF");
  Change(kFormat, "Delimiter CR", true, "DELIMITER", "CR");
  Change(kFormat, "Delimiter CRLF", true, "DELIMITER", "CRLF");
  PressOk(kFormat);
  EXPECT_TRUE(FileIsUnchanged());
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r\n"));
}

TEST_F(OptionDialogs, EveryScreenOptionIsWrittenAndSeen) {
  StartConnected("* -> line \"OK\"");
  const QStringList buttons = TerminalButtons();
  ASSERT_EQ(buttons.size(), 12) << buttons.join(u'|').toStdString();
  OpenScreen();
  NoteSettingsFile();
  Change(kScreen, "Display Terminal Screen at Startup", false, "START_DISP", "OFF");
  Change(kScreen, "Clear Command Line After Sending", true, "AUTO_CLR", "ON");
  Change(kScreen, "Allow Sending Empty Command Lines", true, "ENBL_NULL", "ON");
  Change(kScreen, "Line Number", true, "LINE_NUM", "ON");
  EXPECT_TRUE(OuterSizeBecomes(terminal, {510, 740}));
  Change(kScreen, "Show Function Keys", false, "FUNC_KEY", "OFF");
  EXPECT_TRUE(OuterSizeBecomes(terminal, {510, 675}));
  EXPECT_TRUE(Eventually([this] { return TerminalButtons().isEmpty(); }));
  Change(kScreen, "Show Function Keys", true, "FUNC_KEY", "ON");
  EXPECT_TRUE(OuterSizeBecomes(terminal, {510, 740}));
  EXPECT_EQ(TerminalButtons(), buttons);
  EXPECT_TRUE(BackgroundBecomes(kNavy));
  Change(kScreen, "Background Color Black", true, "BK_COLOR", "BLACK");
  EXPECT_TRUE(BackgroundBecomes(kBlack));
  Change(kScreen, "Background Color System", true, "BK_COLOR", "SYSTEM");
  EXPECT_TRUE(BackgroundBecomes(BackgroundOf(kScreen)));
  Change(kScreen, "Background Color Navy", true, "BK_COLOR", "NAVY");
  EXPECT_TRUE(BackgroundBecomes(kNavy));
  ClickCloseBox(kScreen);
  EXPECT_TRUE(FileIsUnchanged());
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
  // The command line has been cleared, and being empty it may be sent.
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\r\r"));
}

TEST_F(OptionDialogs, AnotherCommandLengthClearsTheLogOnceAllowed) {
  StartConnected("* -> line \"OK\"");
  EnterCommand(QStringLiteral("id"));
  const QString logged = QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]");
  ASSERT_TRUE(TerminalTitleBecomes(logged));
  OpenScreen();
  NoteSettingsFile();
  Length("W (64)");
  Answer(kClearLog, kNo);
  EXPECT_TRUE(Eventually([this] { return IsChecked(kScreen, QStringLiteral("Max Command Length N (48)")); }));
  EXPECT_FALSE(IsChecked(kScreen, QStringLiteral("Max Command Length W (64)")));
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(TerminalTitleBecomes(logged));
  EXPECT_TRUE(OuterSizeBecomes(terminal, {460, 740}));
  Length("W (64)");
  Answer(kClearLog, kYes);
  EXPECT_TRUE(FileBecomes("INPUT_MAX", "W"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  W- INS")));
  EXPECT_TRUE(OuterSizeBecomes(terminal, {580, 740}));
  EXPECT_TRUE(IsChecked(kScreen, QStringLiteral("Max Command Length W (64)")));
  Length("N (48)");
  Answer(kClearLog, kYes);
  EXPECT_TRUE(FileBecomes("INPUT_MAX", "N"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS")));
  EXPECT_TRUE(OuterSizeBecomes(terminal, {460, 740}));
  Length("M (56)");
  Answer(kClearLog, kYes);
  EXPECT_TRUE(FileBecomes("INPUT_MAX", "M"));
  EXPECT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  M- INS")));
  PressOk(kScreen);
  // 56 characters fit, and not one more.
  EnterCommand(QString(60, u'x'));
  EXPECT_TRUE(WireBecomes("id\r" + std::string(56, 'x') + '\r'));
}

TEST_F(OptionDialogs, RestoredDefaultsCloseTheDialogs) {
  StartConnected("* -> line \"OK\"");
  const QByteArray defaults = BytesOf(UserFile(QStringLiteral("defaults.qrn"), {}));
  OpenMain();
  NoteSettingsFile();
  const QString mainWindow = WaitForWindow(kMain);
  const QRect place = Geometry(mainWindow);
  Change(kMainDialog, "Startup Display Position TOP - RIGHT", true, "MAIN_POS", "TR");
  Change(kMainDialog, "Startup Display Position TOP - LEFT", true, "MAIN_POS", "TL");
  Change(kMainDialog, "Startup Display Position TOP - RIGHT", true, "MAIN_POS", "TR");
  EXPECT_EQ(Geometry(mainWindow), place);
  PressOk(kMainDialog);
  OpenMain();
  EXPECT_TRUE(IsChecked(kMainDialog, QStringLiteral("Startup Display Position TOP - RIGHT")));
  MoveAside(kMainDialog, {700, 800});
  OpenFormat();
  MoveAside(kFormat, {100, 800});
  OpenScreen();
  MoveAside(kScreen, {100, 500});
  Choose(kFile, QStringLiteral("Restore Defaults"));
  Answer({QStringLiteral("Are you sure you want to restore the default settings?")}, kYes);
  Acknowledge(kInformation,
              {QStringLiteral("COM port is undefined."), QStringLiteral("Sellect a COM port to connect.")});
  for (const QString& dialog : {kMainDialog, kFormat, kScreen})
    EXPECT_TRUE(WaitForNoWindow(dialog)) << dialog.toStdString();
  EXPECT_EQ(BytesOf(SettingsFile()), defaults);
}

}  // namespace
}  // namespace quarn::test
