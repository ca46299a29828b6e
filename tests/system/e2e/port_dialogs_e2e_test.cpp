#include "system/e2e/opened_line.h"
#include "system/e2e/port_dialogs.h"

namespace quarn::test {
namespace {

TEST_F(PortDialogs, PortNumberConnectsToTheChosenPortAndDropsIt) {
  StartWithTwoPorts();
  OpenNumber();
  EXPECT_TRUE(TitleBecomes(kNumber, QStringLiteral("Quarn - COM Port Number (COM3)  ")));
  PickPort(kOther);
  EXPECT_TRUE(FileIsUnchanged());
  PropertyWatch titles(desktop, {QStringLiteral("-id"), WaitForWindow(kNumber)},
                       QStringLiteral("_NET_WM_NAME"));
  PressSet(kNumber, kInformation);
  Acknowledge(kInformation, kOtherConnected);
  EXPECT_TRUE(titles.Lines().contains("\"Quarn - (COM3)   Connecting Port ... \""))
      << titles.Lines().toStdString();
  EXPECT_TRUE(FileBecomes("COM_PORT", "COM5"));
  EXPECT_TRUE(MainTitleBecomes(kOtherTitle));
  EXPECT_TRUE(TitleBecomes(kNumber, QStringLiteral("Quarn - COM Port Number (COM5)  ")));
  CommandComesToTheOther();
  PickPort(QStringLiteral("NONE"));
  PressSet(kNumber, kInformation);
  Acknowledge(kInformation, {QStringLiteral("  \"COM5\" has been disconnected."),
                             QStringLiteral(" COM port is undefined.")});
  EXPECT_TRUE(FileBecomes("COM_PORT", "NONE"));
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (NONE)")));
  PressOk(kNumber);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(PortDialogs, DetailedListConnectsBySetAndByOk) {
  StartWithTwoPorts();
  OpenList();
  EXPECT_TRUE(IsChecked(kList, RowOf(kPort)));
  EXPECT_FALSE(IsEnabled(kList, kSet));
  ClickRow(kOther);
  EXPECT_TRUE(FileIsUnchanged());
  PressSet(kList, kInformation);
  Acknowledge(kInformation, kOtherConnected);
  EXPECT_TRUE(FileBecomes("COM_PORT", "COM5"));
  EXPECT_TRUE(TitleBecomes(kList, QStringLiteral("Quarn - Detailed COM Port List  (COM5)  ")));
  CommandComesToTheOther();
  ClickRow(kPort);
  ClickButton(kList, kOk, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  EXPECT_TRUE(BoxSays(kConfirmation, {QStringLiteral("Do you want to apply this configuration?")}));
  EXPECT_EQ(Buttons(kConfirmation), (QStringList{kOk, kCancel}));
  AnswerBox(kConfirmation, kOk);
  Acknowledge(kInformation, {QStringLiteral("Successfully connected to  \"COM3\"")});
  EXPECT_TRUE(WaitForNoWindow(kList));
  EXPECT_TRUE(FileBecomes("COM_PORT", "COM3"));
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\r"));
}

TEST_F(PortDialogs, PortNumberAsksAboutAChoiceThatWasNotSet) {
  StartWithTwoPorts();
  for (const QString& answer : {kNo, kYes}) {
    OpenNumber();
    PickPort(kOther);
    ClickButton(kNumber, kOk, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
    EXPECT_TRUE(FileIsUnchanged());
    Answer({QStringLiteral("Setting has been changed."),
            QStringLiteral("Is it OK to apply this configuration?")},
           answer);
    if (answer == kYes) Acknowledge(kInformation, kOtherConnected);
    EXPECT_TRUE(WaitForNoWindow(kNumber));
    EXPECT_TRUE(answer == kYes ? FileBecomes("COM_PORT", "COM5") : FileIsUnchanged());
  }
  EXPECT_TRUE(MainTitleBecomes(kOtherTitle));
  CommandComesToTheOther();
}

TEST_F(PortDialogs, DetailedListLeavesTheRowThatWasNotSet) {
  StartWithTwoPorts();
  OpenList();
  ClickRow(kOther);
  ClickButton(kList, kOk, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  AnswerBox(kConfirmation, kCancel);
  EXPECT_TRUE(WaitForNoWindow(kList));
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  CommandComesToCom3();
}

TEST_F(PortDialogs, PortSettingsAreSetAndReset) {
  StartConnected("* -> line \"OK\"");
  const OpenedLine line(instrument->NodePath());
  ASSERT_EQ(line.Speed(), 9600U);
  OpenSettings();
  EXPECT_TRUE(SettingsTitleBecomes("9600, 8, None, 1"));
  PickValue(BitsPerSecond, "115200", "115200, 8, None, 1");
  PickValue(StopBits, "2", "115200, 8, None, 2");
  EXPECT_TRUE(FileIsUnchanged());
  ClickButton(kSettings, kSet, [&] { return line.Speed() == 115200U; });
  EXPECT_TRUE(Eventually([&] { return line.HasTwoStopBits(); }));
  // Everything is saved, and that puts the value of ENBL_NULL into FUNC_KEY.
  EXPECT_TRUE(FileBecomes({{"COM_BPS", "115200"}, {"COM_STOP", "2"}, {"FUNC_KEY", "OFF"}}));
  EnterCommand(QStringLiteral("id"));
  EXPECT_TRUE(WireBecomes("id\r"));
  PickValue(DataBits, "7", "115200, 7, None, 2");
  PickValue(Parity, "Even", "115200, 7, Even, 2");
  AskDefaults(kCancel);
  EXPECT_TRUE(SettingsTitleBecomes("115200, 7, Even, 2"));
  EXPECT_TRUE(FileIsUnchanged());
  AskDefaults(kOk);
  EXPECT_TRUE(Passes(QStringLiteral("Settings have been reset to default values.")));
  EXPECT_TRUE(SettingsTitleBecomes("9600, 8, None, 1"));
  EXPECT_TRUE(FileBecomes({{"COM_BPS", "9600"}, {"COM_STOP", "1"}}));
  EXPECT_TRUE(Eventually([&] { return line.Speed() == 9600U && !line.HasTwoStopBits(); }));
  PickValue(BitsPerSecond, "19200", "19200, 8, None, 1");
  ClickButton(kSettings, kOk, [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
  EXPECT_TRUE(BoxSays(kConfirmation, {QStringLiteral("Settings have been changed."),
                                      QStringLiteral("Is it OK to save this configuration?")}));
  AnswerBox(kConfirmation, kOk);
  EXPECT_TRUE(WaitForNoWindow(kSettings));
  EXPECT_TRUE(FileBecomes("COM_BPS", "19200"));
  EXPECT_EQ(line.Speed(), 19200U);
  EnterCommand();
  EXPECT_TRUE(WireBecomes("id\rid\r"));
}

}  // namespace
}  // namespace quarn::test
