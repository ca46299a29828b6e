// What the options do to the line, and what a loaded file does to their dialogs.

#include "system/e2e/option_dialogs.h"

namespace quarn::test {
namespace {

TEST_F(OptionDialogs, TheSpeedDecidesHowLongASilenceEndsTheResponse) {
  // At 600 bits per second a response ends after 1440 ms of silence, at low speed after 2160 ms.
  StartConnected("* -> \"first\" 1800 \"second\\r\"", {{QStringLiteral("COM_BPS"), QStringLiteral("600")}});
  OpenFormat();
  NoteSettingsFile();
  EXPECT_TRUE(IsChecked(kFormat, QStringLiteral("Port Speed HIGH")));
  EnterCommand(QStringLiteral("id"));
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-2  ]")));
  const QByteArray high = CopiedLog();
  EXPECT_TRUE(high.contains("first")) << high.toStdString();
  EXPECT_FALSE(high.contains("second")) << high.toStdString();
  ASSERT_TRUE(Eventually([this] { return instrument->Answers() == 1; }));
  Change(kFormat, "Port Speed LOW", true, "PORT_SPEED", "LOW");
  EnterCommand();
  ASSERT_TRUE(TerminalTitleBecomes(QStringLiteral("Quarn - Terminal Screeen (COM3)  N- INS  [ 1-4  ]")));
  const QByteArray low = CopiedLog();
  EXPECT_TRUE(low.contains("firstsecond")) << low.toStdString();
  EXPECT_TRUE(WireBecomes("id\rid\r"));
}

TEST_F(OptionDialogs, EveryDelimiterIsSeenOnTheWire) {
  StartConnected("* -> line \"OK\"");
  OpenFormat();
  NoteSettingsFile();
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
  Change(kFormat, "Delimiter LF", true, "DELIMITER", "LF");
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\n"));
  Change(kFormat, "Delimiter STX / ETX", true, "DELIMITER", "STX_ETX");
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\n\x02id\x03"));
  Change(kFormat, "Delimiter CRLF", true, "DELIMITER", "CRLF");
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\n\x02id\x03id\r\n"));
  Change(kFormat, "Delimiter CR", true, "DELIMITER", "CR");
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\n\x02id\x03id\r\nid\r"));
}

TEST_F(OptionDialogs, ADeadLineRefusesTheSpeed) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3)")));
  OpenFormat();
  NoteSettingsFile();
  // The device goes. The loss is told, and the line stays as it is until something is done with it.
  instrument.reset();
  Acknowledge(kError, {QStringLiteral("  \"COM3\" is not available."),
                       QStringLiteral("Check \"Detailed COM Port List\".")});
  ASSERT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3-NC)")));
  ClickUntil(kFormat, QStringLiteral("Port Speed LOW"),
             [this] { return !desktop.Windows(kError).isEmpty(); });
  Acknowledge(kError,
              {QStringLiteral("Failed to configure  \"COM3\""), QStringLiteral("Check COM port state.")});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(Eventually([this] { return IsChecked(kFormat, QStringLiteral("Port Speed HIGH")); }));
  EXPECT_FALSE(IsChecked(kFormat, QStringLiteral("Port Speed LOW")));
  PressOk(kFormat);
}

TEST_F(OptionDialogs, ALoadedFileIsShownInEveryDialog) {
  const QString path =
      UserFile(QStringLiteral("bench.qrn"), {{QStringLiteral("COM_PORT"), kPort},
                                             {QStringLiteral("DELIMITER"), QStringLiteral("LF")},
                                             {QStringLiteral("COM_BUF"), QStringLiteral("2K")},
                                             {QStringLiteral("R_TIMEOUT"), QStringLiteral("OFF")},
                                             {QStringLiteral("LINE_NUM"), QStringLiteral("ON")},
                                             {QStringLiteral("BK_COLOR"), QStringLiteral("BLACK")},
                                             {QStringLiteral("MAIN_POS"), QStringLiteral("TR")},
                                             {QStringLiteral("MEM3"), QStringLiteral("loaded")}});
  StartConnected("* -> line \"OK\"");
  OpenFormat();
  MoveAside(kFormat, {100, 800});
  OpenScreen();
  MoveAside(kScreen, {100, 500});
  OpenMain();
  MoveAside(kMainDialog, {700, 850});
  OpenDialog(QStringLiteral("Tools"), QStringLiteral("Function Key Table"), kTable);
  MoveAside(kTable, {700, 400});
  Choose(kFile, QStringLiteral("Open"));
  TypePath(QStringLiteral("^Open Quarn Configuration File$"), path);
  EXPECT_TRUE(Passes(QStringLiteral("QRN file was opened successfully.")));
  EXPECT_TRUE(Passes(kConnected));
  const auto becomes = [this](const QString& dialog, const char* control, bool checked) {
    return Eventually([&] {
      const std::optional<Control> found = FindControl(dialog, QLatin1String(control));
      return found && found->checked == checked;
    });
  };
  EXPECT_TRUE(becomes(kFormat, "Delimiter LF", true));
  EXPECT_TRUE(becomes(kFormat, "Delimiter CR", false));
  EXPECT_TRUE(becomes(kFormat, "Max Receive Buffer Size 2048", true));
  EXPECT_TRUE(becomes(kFormat, "Apply Response Timeout", false));
  EXPECT_TRUE(becomes(kScreen, "Line Number", true));
  EXPECT_TRUE(becomes(kScreen, "Background Color Black", true));
  EXPECT_TRUE(becomes(kScreen, "Background Color Navy", false));
  EXPECT_TRUE(becomes(kMainDialog, "Startup Display Position TOP - RIGHT", true));
  EXPECT_TRUE(Eventually(
      [this] { return TextOfControl(kTable, QStringLiteral("MEM3")) == QLatin1String("loaded"); }));
  EXPECT_EQ(BytesOf(SettingsFile()), BytesOf(path));
}

TEST_F(OptionDialogs, TheTerminalScreensMenuOpensItsDialogs) {
  StartConnected("* -> line \"OK\"");
  ChooseFromContextMenu(4);
  EXPECT_FALSE(WaitForWindow(kTable).isEmpty());
  PressOk(kTable);
  ChooseFromContextMenu(5);
  EXPECT_FALSE(WaitForWindow(kScreen).isEmpty());
  NoteSettingsFile();
  Change(kScreen, "Line Number", true, "LINE_NUM", "ON");
  PressOk(kScreen);
}

}  // namespace
}  // namespace quarn::test
