// The port dialogs when the port cannot be opened: it has gone, or another program holds it.

#include "system/e2e/opened_line.h"
#include "system/e2e/port_dialogs.h"

namespace quarn::test {
namespace {

TEST_F(PortDialogs, PortNumberKeepsThePortWhenTheChosenOneHasGone) {
  StartWithTwoPorts();
  OpenNumber();
  PickPort(kOther);
  Renumber(kOther, "COM6");
  PressSet(kNumber, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\"."), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  CommandComesToCom3();
  ClickCloseBox(kNumber);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(PortDialogs, PortNumberKeepsThePortUntilTheChosenOneIsFree) {
  StartWithTwoPorts();
  const OpenedLine held(other.NodePath());
  ASSERT_TRUE(held.Lock());
  OpenNumber();
  PickPort(kOther);
  PressSet(kNumber, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\"."), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(TitleBecomes(kNumber, QStringLiteral("Quarn - COM Port Number (COM3)  ")));
  CommandComesToCom3();
  ASSERT_TRUE(held.Unlock());
  PickPort(kOther);
  PressSet(kNumber, kInformation);
  Acknowledge(kInformation, kOtherConnected);
  EXPECT_TRUE(FileBecomes("COM_PORT", "COM5"));
  EXPECT_TRUE(MainTitleBecomes(kOtherTitle));
}

TEST_F(PortDialogs, DetailedListKeepsThePortWhenTheChosenOneHasGone) {
  StartWithTwoPorts();
  OpenList();
  ClickRow(kOther);
  Renumber(kOther, "COM6");
  PressSet(kList, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\""), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(PortItemsBecome(false, true, true));
  EXPECT_TRUE(Eventually([this] { return IsChecked(kList, RowOf(kPort)); }));
  CommandComesToCom3();
}

TEST_F(PortDialogs, DetailedListNamesTheProgramThatHoldsAPort) {
  StartWithTwoPorts();
  const OpenedLine line(other.NodePath());
  ChildProcess holder;
  holder.start(QStringLiteral("flock"), {QStringLiteral("--no-fork"), other.NodePath(),
                                         QStringLiteral("sleep"), QStringLiteral("600")});
  ASSERT_TRUE(holder.waitForStarted());
  ASSERT_TRUE(Eventually([&] { return !line.Lock() || !line.Unlock(); }));
  OpenList();
  EXPECT_TRUE(TitleBecomes(kList, QStringLiteral("Quarn - Detailed COM Port List  (COM3)  ")));
  EXPECT_TRUE(RowOf(kOther).contains(QStringLiteral("in use by sleep (PID %1) ").arg(holder.processId())))
      << RowOf(kOther).toStdString();
  ClickRow(kOther);
  PressSet(kList, kError);
  Acknowledge(kError, {QStringLiteral("Failed to connect to \"COM5\""), kCheckList});
  EXPECT_TRUE(FileIsUnchanged());
  EXPECT_TRUE(MainTitleBecomes(kTitle));
  EXPECT_TRUE(Eventually([this] { return IsChecked(kList, RowOf(kPort)); }));
  CommandComesToCom3();
  End(holder);
  ClickRow(kOther);
  PressSet(kList, kInformation);
  Acknowledge(kInformation, kOtherConnected);
  EXPECT_TRUE(FileBecomes("COM_PORT", "COM5"));
  ClickCloseBox(kList);
  EXPECT_TRUE(FileIsUnchanged());
}

TEST_F(PortDialogs, PortSettingsAreKeptForAPortThatHasGone) {
  StartConnected("* -> line \"OK\"");
  ASSERT_TRUE(MainTitleBecomes(kTitle));
  OpenSettings();
  PickValue(BitsPerSecond, "19200", "19200, 8, None, 1");
  Renumber(kPort, "COM4");
  PressSet(kSettings, kError);
  Acknowledge(kError, kNotAvailable);
  EXPECT_TRUE(MainTitleBecomes(QStringLiteral("Quarn   (COM3-NC)")));
  EXPECT_TRUE(PortItemsBecome(true, false, false));
  // Everything is saved, and that puts the value of ENBL_NULL into FUNC_KEY.
  EXPECT_TRUE(FileBecomes({{"COM_BPS", "19200"}, {"FUNC_KEY", "OFF"}}));
  PressOk(kSettings);
  EXPECT_TRUE(FileIsUnchanged());
}

}  // namespace
}  // namespace quarn::test
