#include "dialogs/serial/port_rules.h"

#include <gtest/gtest.h>

#include "settings/settings_table.h"

namespace quarn::test {
namespace {

const PortSituation kConnected{"COM3", true, {"COM1", "COM3"}};
const PortSituation kClosed{"COM3", false, {"COM1", "COM3"}};
const PortSituation kGone{"COM3", true, {"COM1"}};
const PortSituation kNothing{"NONE", false, {}};

TEST(PortRules, SituationIsThatOfTheConnection) {
  SharedState state;
  PortConnection connection;
  connection.portNames = {"COM1", "COM2"};
  EXPECT_EQ(SituationOf(state, connection).ports, (QStringList{"COM1", "COM2"}));
  EXPECT_EQ(SituationOf(state, connection).current, "NONE");
  EXPECT_FALSE(SituationOf(state, connection).connected);
}

TEST(PortNumberRules, OpensWithTheCurrentPortWhenItIsListedAndConnected) {
  EXPECT_EQ(ChoiceAtOpening(kConnected), (PortChoice{"COM3", true}));
  EXPECT_EQ(ChoiceAtOpening(kClosed), (PortChoice{"NONE", false}));
  EXPECT_EQ(ChoiceAtOpening(kGone), (PortChoice{"NONE", false}));
  EXPECT_EQ(ChoiceAtOpening(kNothing), (PortChoice{"NONE", false}));
}

TEST(PortNumberRules, ListChangeShowsTheCurrentPortWhenItIsListed) {
  EXPECT_EQ(ChoiceAtListChange(kConnected), (PortChoice{"COM3", true}));
  EXPECT_EQ(ChoiceAtListChange(kClosed), (PortChoice{"COM3", true}));
  EXPECT_EQ(ChoiceAtListChange(kGone), (PortChoice{"NONE", false}));
}

TEST(PortNumberRules, PickedPortCountsAtOnceOnlyWhileNotConnected) {
  EXPECT_EQ(ChoiceOfItem(kClosed, "COM1"), (PortChoice{"COM1", true}));
  EXPECT_EQ(ChoiceOfItem(kClosed, "COM9"), (PortChoice{"NONE", false}));
  EXPECT_EQ(ChoiceOfItem(kConnected, "COM1"), (PortChoice{"NONE", false}));
  EXPECT_EQ(ChoiceOfItem(kClosed, "NONE"), (PortChoice{"NONE", false}));
}

TEST(PortNumberRules, SetIsForWhatIsNotSoAlready) {
  EXPECT_FALSE(IsSetEnabled(kConnected, "COM3"));
  EXPECT_TRUE(IsSetEnabled(kConnected, "COM1"));
  EXPECT_TRUE(IsSetEnabled(kConnected, "NONE"));
  EXPECT_TRUE(IsSetEnabled(kConnected, "com3"));
  EXPECT_TRUE(IsSetEnabled(kClosed, "COM3"));
  EXPECT_TRUE(IsSetEnabled(kNothing, "NONE"));
}

TEST(PortNumberRules, ChangeIsPendingWhenThePersonMadeOne) {
  EXPECT_FALSE(IsChangePending(kClosed, "NONE", "NONE"));  // as the dialog came up
  EXPECT_TRUE(IsChangePending(kClosed, "COM3", "NONE"));
  EXPECT_TRUE(IsChangePending(kConnected, "COM1", "COM3"));
  EXPECT_TRUE(IsChangePending(kConnected, "NONE", "COM3"));
  EXPECT_FALSE(IsChangePending(kConnected, "COM3", "COM3"));
  EXPECT_FALSE(IsChangePending(kConnected, "COM3", "NONE"));  // it is connected by now
}

TEST(PortNumberRules, TitleNamesPortAndStatus) {
  EXPECT_EQ(PortNumberTitle(kConnected, ""), "Quarn - COM Port Number (COM3)  ");
  EXPECT_EQ(PortNumberTitle(kClosed, ""), "Quarn - COM Port Number (COM3-NC)  ");
  EXPECT_EQ(PortNumberTitle(kNothing, ""), "Quarn - COM Port Number (NONE)  ");
  EXPECT_EQ(PortNumberTitle(kConnected, " Connecting Port ... "), "Quarn - (COM3)   Connecting Port ... ");
}

TEST(PortListRules, RowsFollowTheNamesAndTellWhatTheyAre) {
  const Port board{"COM2", "Board - /dev/ttyACM0 (COM2)"};
  const Port adapter{"COM10", "Adapter - /dev/ttyUSB0, in use by PID 7 (COM10)"};
  const QList<Port> rows = PortRowsOf({"COM2", "COM7", "COM10"}, {adapter, board});
  // COM7 has vanished since it was listed.
  EXPECT_EQ(rows, (QList<Port>{board, {"COM7", "COM7"}, adapter}));
  EXPECT_EQ(RowOf(rows, "COM10"), 2);
  EXPECT_EQ(RowOf(rows, "COM1"), std::nullopt);
  EXPECT_EQ(RowOf(rows, "com2"), std::nullopt);
}

TEST(PortListRules, TwoDevicesOfOneNameHaveARowEach) {
  const QList<Port> two{{"COM2", "First (COM2)"}, {"COM2", "Second (COM2)"}};
  EXPECT_EQ(PortRowsOf({"COM2", "COM2"}, two), two);
}

TEST(PortListRules, ThereAreThirtyRows) {
  QStringList ports;
  for (int i = 1; i <= 31; ++i) ports.append(QStringLiteral("COM%1").arg(i));
  EXPECT_EQ(PortRowsOf(ports, {}).size(), 30);
  EXPECT_TRUE(IsRowSetEnabled({"NONE", false, ports}, "COM30"));
  EXPECT_FALSE(IsRowSetEnabled({"NONE", false, ports}, "COM31"));
}

TEST(PortListRules, SetIsForAListedPortThatIsNotConnected) {
  EXPECT_FALSE(IsRowSetEnabled(kNothing, "NONE"));
  EXPECT_FALSE(IsRowSetEnabled(kConnected, "COM3"));
  EXPECT_TRUE(IsRowSetEnabled(kConnected, "COM1"));
  EXPECT_FALSE(IsRowSetEnabled(kConnected, "COM9"));
  EXPECT_TRUE(IsRowSetEnabled(kClosed, "COM3"));
  EXPECT_FALSE(IsRowSetEnabled(kClosed, "NONE"));
}

TEST(PortListRules, StatusAndTitle) {
  EXPECT_EQ(PortListStatus(kNothing), "No available COM ports detected.");
  EXPECT_EQ(PortListStatus(kClosed), "Select a port from the list below.");
  EXPECT_EQ(DetailedPortListTitle(kConnected, ""), "Quarn - Detailed COM Port List  (COM3)  ");
  EXPECT_EQ(DetailedPortListTitle(kClosed, ""), "Quarn - Detailed COM Port List  (COM3-NC)  ");
  EXPECT_EQ(DetailedPortListTitle(kNothing, " Connecting Port ... "),
            "Quarn - Detailed COM Port List  (NONE)   Connecting Port ... ");
}

TEST(PortSettingsRules, ValuesGoToAndFro) {
  SettingsRecord settings = DefaultSettings();
  EXPECT_EQ(LineValuesOf(settings), DefaultLineValues());
  PutLineValues({"110", "7", "Odd", "2"}, settings);
  EXPECT_EQ(settings.comBps, "110");
  EXPECT_EQ(settings.comBits, "7");
  EXPECT_EQ(settings.comParity, "Odd");
  EXPECT_EQ(settings.comStop, "2");
  EXPECT_EQ(PortSettingsTitle(LineValuesOf(settings)), "Quarn - COM Port Settings  (110, 7, Odd, 2)");
}

}  // namespace
}  // namespace quarn::test
