#include "serial/friendly_name.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(PortNameIn, TakesOneOrTwoCharactersFromTheBracket) {
  EXPECT_EQ(PortNameIn("USB Serial Port (COM7)"), "COM7");
  EXPECT_EQ(PortNameIn("USB Serial Port (COM12)"), "COM12");
  EXPECT_EQ(PortNameIn("(COM1)"), "COM1");
  EXPECT_EQ(PortNameIn("Port (COM3) with words behind"), "COM3");
}

TEST(PortNameIn, HasNoNameWithoutAFittingBracket) {
  EXPECT_EQ(PortNameIn(""), "");
  EXPECT_EQ(PortNameIn("Communications Port"), "");
  EXPECT_EQ(PortNameIn("COM7"), "");
  EXPECT_EQ(PortNameIn("Port (com7)"), "");
  EXPECT_EQ(PortNameIn("Port (COM123)"), "");
  EXPECT_EQ(PortNameIn("Port (COM)"), "");
  EXPECT_EQ(PortNameIn("Port (COM7"), "");
  EXPECT_EQ(PortNameIn("Port (COM"), "");
  EXPECT_EQ(PortNameIn("Port (LPT1)"), "");
}

TEST(PortNameIn, DoesNotAskForDigits) {
  EXPECT_EQ(PortNameIn("Port (COMx)"), "COMx");
  EXPECT_EQ(PortNameIn("Port (COM-9)"), "COM-9");
  // A bracket after one character is taken before one after two.
  EXPECT_EQ(PortNameIn("Port (COM1))"), "COM1");
  EXPECT_EQ(PortNameIn("Port (COM))"), "COM)");
}

TEST(PortNameIn, GoesOnBehindABracketThatDoesNotFit) {
  EXPECT_EQ(PortNameIn("(COM123) (COM4)"), "COM4");
  EXPECT_EQ(PortNameIn("(COM(COM5)"), "COM5");
  EXPECT_EQ(PortNameIn("(COM8) (COM9)"), "COM8");
}

TEST(PortNameIn, LooksAtTwoHundredAndFiftyPositions) {
  EXPECT_EQ(PortNameIn(QString(249, 'x') + "(COM6)"), "COM6");
  EXPECT_EQ(PortNameIn(QString(250, 'x') + "(COM6)"), "");
}

QStringList NamesOf(const QList<Port>& ports) {
  QStringList names;
  for (const Port& port : ports) names.append(port.name);
  return names;
}

TEST(PortsNamed, AreInNumberOrderWithTheFriendlyNameAsDescription) {
  EXPECT_EQ(PortsNamed({"A (COM10)", "B (COM9)", "C (COM2)"}),
            (QList<Port>{{"COM2", "C (COM2)"}, {"COM9", "B (COM9)"}, {"COM10", "A (COM10)"}}));
  EXPECT_EQ(PortsNamed({}), QList<Port>());
}

TEST(PortsNamed, KeepTheirOrderWhenTheyHaveOneName) {
  EXPECT_EQ(PortsNamed({"B (COM4)", "C (COM3)", "A (COM4)"}),
            (QList<Port>{{"COM3", "C (COM3)"}, {"COM4", "B (COM4)"}, {"COM4", "A (COM4)"}}));
}

TEST(PortsNamed, AreOnlyThoseWithAPortName) {
  // Names that drivers really use, and broken ones.
  const QStringList unusable{"USB Serial Port (COM104)",
                             "pair (COM5->COM6)",
                             "Gadget COM7 serial",
                             "TELECOM box",
                             "Printer (LPT1)",
                             "modem (com3)",
                             "",
                             "(COM",
                             "(COM)",
                             "(COM8",
                             "COM9",
                             QString(250, 'x') + "(COM3)"};
  EXPECT_EQ(PortsNamed(unusable), QList<Port>());
  for (const QString& name : unusable) {
    EXPECT_EQ(NamesOf(PortsNamed({"A (COM5)", name, "B (COM4)"})), (QStringList{"COM4", "COM5"}))
        << name.toStdString();
  }
}

TEST(PortsNamed, AreOfTheFirstHundredFriendlyNamesWithCom) {
  QStringList names("no port at all");
  for (int i = 0; i < 120; ++i) names.append(QStringLiteral("Port %1 (COM%2)").arg(i).arg(i % 99 + 1));
  const QList<Port> ports = PortsNamed(names);
  ASSERT_EQ(ports.size(), 100);
  EXPECT_EQ(ports.first(), (Port{"COM1", "Port 0 (COM1)"}));
  EXPECT_EQ(ports.at(1), (Port{"COM1", "Port 99 (COM1)"}));
  EXPECT_EQ(ports.last(), (Port{"COM99", "Port 98 (COM99)"}));
  // A device without a port takes a place, too.
  EXPECT_EQ(NamesOf(PortsNamed(QStringList(99, "TELECOM box") + QStringList{"A (COM4)", "B (COM5)"})),
            QStringList{"COM4"});
}

}  // namespace
}  // namespace quarn
