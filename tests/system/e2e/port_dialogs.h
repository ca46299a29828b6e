#pragma once

#include <QFile>

#include "system/e2e/dialogs.h"

namespace quarn::test {

/// An end-to-end test of the port dialogs.
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
  /// Gives a port another number. How many there are stays the same, so that the program does not notice.
  void Renumber(const QString& port, const char* number) {
    const QString ports = config.filePath(QStringLiteral("Halvo/Quarn/ports/"));
    ASSERT_TRUE(QFile::rename(ports + port, ports + QLatin1String(number)));
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

}  // namespace quarn::test
