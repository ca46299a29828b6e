#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QFile>

#include "e2e/dialogs.h"

namespace quarn::test {
namespace {

/// A line opened by this process, as another program would.
class OpenedLine {
 public:
  explicit OpenedLine(const QString& node)
      : m_descriptor(open(QFile::encodeName(node).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
  ~OpenedLine() { close(m_descriptor); }
  OpenedLine(const OpenedLine&) = delete;
  OpenedLine& operator=(const OpenedLine&) = delete;

  [[nodiscard]] bool Lock() const { return flock(m_descriptor, LOCK_EX | LOCK_NB) == 0; }
  [[nodiscard]] bool Unlock() const { return flock(m_descriptor, LOCK_UN) == 0; }
  [[nodiscard]] unsigned int Speed() const { return Settings().c_ospeed; }
  [[nodiscard]] bool HasTwoStopBits() const { return (Settings().c_cflag & CSTOPB) != 0; }

 private:
  [[nodiscard]] termios2 Settings() const {
    termios2 settings{};
    EXPECT_EQ(ioctl(m_descriptor, TCGETS2, &settings), 0);
    return settings;
  }

  int m_descriptor;
};

class PortDialogs : public Dialogs {
 protected:
  enum List { BitsPerSecond, DataBits, Parity, StopBits };
  /// Starts with COM3 and another instrument as COM5.
  void StartWithTwoPorts() {
    ASSERT_TRUE(portLinks.Add(kOther, other.NodePath()));
    StartConnected("* -> line \"three\"");
    ASSERT_TRUE(MainTitleBecomes(kTitle));
  }
  void OpenNumber() {
    OpenDialog(kPortMenu, QStringLiteral("COM Port Number"), kNumber);
    NoteSettingsFile();
  }
  void OpenList() {
    OpenDialog(kPortMenu, QStringLiteral("Detailed COM Port List"), kList);
    NoteSettingsFile();
  }
  void OpenSettings() {
    OpenDialog(kPortMenu, QStringLiteral("COM Port Settings"), kSettings);
    NoteSettingsFile();
  }
  void PickPort(const QString& port) {
    // With nothing to set it is not enabled, once the dialog has looked.
    ASSERT_TRUE(Eventually([this] { return !IsEnabled(kNumber, kSet); }));
    Pick(kNumber, 0, port);
    EXPECT_TRUE(Eventually([this] { return IsEnabled(kNumber, kSet); }));
  }
  /// Picks a value from a drop-down list, which the title then tells.
  void PickValue(List list, const char* value, const char* values) {
    Pick(kSettings, list, QLatin1String(value));
    EXPECT_TRUE(SettingsTitleBecomes(values));
  }
  ::testing::AssertionResult SettingsTitleBecomes(const char* values) {
    return TitleBecomes(kSettings,
                        QStringLiteral("Quarn - COM Port Settings  (%1)").arg(QLatin1String(values)));
  }
  /// The row of the detailed list that tells of this device.
  QString RowOf(const QString& port) {
    for (const Control& each : Controls(kList))
      if (each.role == QLatin1String("radio button") && each.name.contains(port)) return each.name;
    return {};
  }
  void ClickRow(const QString& port) {
    ASSERT_TRUE(Eventually([&] { return !RowOf(port).isEmpty(); }));
    ClickUntil(kList, RowOf(port), [&] { return IsChecked(kList, RowOf(port)); });
  }
  void AskDefaults(const QString& answer) {
    ClickButton(kSettings, QStringLiteral("DEFAULT"),
                [this] { return !desktop.Windows(kConfirmation).isEmpty(); });
    EXPECT_TRUE(
        BoxSays(kConfirmation, {QStringLiteral("Are you sure you want to restore the default settings? ")}));
    AnswerBox(kConfirmation, answer);
  }
  void PressSet(const QString& dialog, const QString& box) {
    ClickButton(dialog, kSet, [&] { return !desktop.Windows(box).isEmpty(); });
  }
  void CommandComesToCom3() {
    EnterCommand(QStringLiteral("id"));
    EXPECT_TRUE(WireBecomes("id\r"));
    EXPECT_EQ(other.Received(), "");
  }
  void CommandComesToTheOther() {
    EnterCommand(QStringLiteral("id"));
    EXPECT_TRUE(Eventually([this] { return other.Received() == "id\r"; })) << other.Received();
    EXPECT_EQ(instrument->Received(), "");
  }

  const QString kOther = QStringLiteral("COM5");
  const QString kSet = QStringLiteral("SET");
  const QString kTitle = QStringLiteral("Quarn   (COM3)");
  const QString kOtherTitle = QStringLiteral("Quarn   (COM5)");
  const QString kNumber = QStringLiteral("^Quarn - COM Port Number");
  const QString kList = QStringLiteral("^Quarn - Detailed COM Port List");
  const QString kSettings = QStringLiteral("^Quarn - COM Port Settings");
  const QStringList kOtherConnected{QStringLiteral("Successfully connected to  \"COM5\"")};
  const QString kCheckList = QStringLiteral("Check \"Detailed COM Port List\".");
  ServedInstrument other{"* -> line \"five\""};
};

TEST_F(PortDialogs, PortNumberConnectsToTheChosenPortAndDropsIt) {
  StartWithTwoPorts();
  OpenNumber();
  EXPECT_TRUE(TitleBecomes(kNumber, QStringLiteral("Quarn - COM Port Number (COM3)  ")));
  PickPort(kOther);
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

TEST_F(PortDialogs, PortNumberKeepsThePortWhenTheChosenOneHasGone) {
  StartWithTwoPorts();
  OpenNumber();
  PickPort(kOther);
  // Under another name: the number of ports is the same, so that nothing else notices.
  const QString ports = config.filePath(QStringLiteral("Halvo/Quarn/ports/"));
  ASSERT_TRUE(QFile::rename(ports + kOther, ports + QStringLiteral("COM6")));
  PressSet(kNumber, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\"."), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  CommandComesToCom3();
  ClickCloseBox(kNumber);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(PortDialogs, DetailedListKeepsThePortWhileAnotherProgramHoldsTheChosenOne) {
  StartWithTwoPorts();
  const OpenedLine held(other.NodePath());
  ASSERT_TRUE(held.Lock());
  OpenList();
  EXPECT_TRUE(TitleBecomes(kList, QStringLiteral("Quarn - Detailed COM Port List  (COM3)  ")));
  EXPECT_TRUE(IsChecked(kList, RowOf(kPort)));
  EXPECT_FALSE(IsEnabled(kList, kSet));
  ClickRow(kOther);
  PressSet(kList, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\""), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(Eventually([this] { return IsChecked(kList, RowOf(kPort)); }));
  CommandComesToCom3();
  ClickCloseBox(kList);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(PortDialogs, DetailedListConnectsBySetAndByOk) {
  StartWithTwoPorts();
  OpenList();
  ClickRow(kOther);
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
