#include "serial/port_names.h"

#include <gtest/gtest.h>

#include "serial/friendly_name.h"
#include "serial/port_source.h"

namespace quarn {
namespace {

PortNames NamesFrom(std::initializer_list<const char*> list) {
  PortNames names;
  std::size_t i = 0;
  for (const char* name : list) {
    names[i++] = QString::fromUtf8(name);
  }
  return names;
}

TEST(ShortPortName, TakesOneOrTwoCharactersFromTheBracket) {
  EXPECT_EQ(ShortPortName("USB Serial Port (COM7)"), "COM7");
  EXPECT_EQ(ShortPortName("USB Serial Port (COM12)"), "COM12");
  EXPECT_EQ(ShortPortName("(COM1)"), "COM1");
  EXPECT_EQ(ShortPortName("Port (COM3) with words behind"), "COM3");
}

TEST(ShortPortName, HasNoNameWithoutAFittingBracket) {
  EXPECT_EQ(ShortPortName(""), "");
  EXPECT_EQ(ShortPortName("Communications Port"), "");
  EXPECT_EQ(ShortPortName("COM7"), "");
  EXPECT_EQ(ShortPortName("Port (com7)"), "");
  EXPECT_EQ(ShortPortName("Port (COM123)"), "");
  EXPECT_EQ(ShortPortName("Port (COM)"), "");
  EXPECT_EQ(ShortPortName("Port (COM7"), "");
  EXPECT_EQ(ShortPortName("Port (COM"), "");
  EXPECT_EQ(ShortPortName("Port (LPT1)"), "");
}

TEST(ShortPortName, DoesNotAskForDigits) {
  EXPECT_EQ(ShortPortName("Port (COMx)"), "COMx");
  EXPECT_EQ(ShortPortName("Port (COM-9)"), "COM-9");
  // The character at the fifth place decides first, whatever stands at the sixth.
  EXPECT_EQ(ShortPortName("Port (COM1))"), "COM1");
  EXPECT_EQ(ShortPortName("Port (COM))"), "COM)");
}

TEST(ShortPortName, GoesOnBehindABracketThatDoesNotFit) {
  EXPECT_EQ(ShortPortName("(COM123) (COM4)"), "COM4");
  EXPECT_EQ(ShortPortName("(COM(COM5)"), "COM5");
  EXPECT_EQ(ShortPortName("(COM8) (COM9)"), "COM8");
}

TEST(ShortPortName, LooksAtTwoHundredAndFiftyPositions) {
  EXPECT_EQ(ShortPortName(QString(249, 'x') + "(COM6)"), "COM6");
  EXPECT_EQ(ShortPortName(QString(250, 'x') + "(COM6)"), "");
}

TEST(SortPortNames, OrdersByNumber) {
  PortNames names = NamesFrom({"A (COM2)", "B (COM10)", "C (COM9)"});
  std::int32_t count = 3;
  SortPortNames(count, names);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(names[0], "COM2");
  EXPECT_EQ(names[1], "COM9");
  EXPECT_EQ(names[2], "COM10");
  EXPECT_EQ(names[3], "");
}

TEST(SortPortNames, DropsNamesWithoutAPort) {
  PortNames names = NamesFrom({"COM with no bracket", "B (COM100)", "C (COM5)", "", "D (COM1)"});
  std::int32_t count = 5;
  SortPortNames(count, names);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(names[0], "COM1");
  EXPECT_EQ(names[1], "COM5");
  EXPECT_EQ(names[2], "");
}

TEST(SortPortNames, ConvertsOnlyTheFirstCountEntries) {
  PortNames names = NamesFrom({"A (COM4)", "B (COM3)", "C (COM2)"});
  std::int32_t count = 2;
  SortPortNames(count, names);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(names[0], "COM3");
  EXPECT_EQ(names[1], "COM4");
  EXPECT_EQ(names[2], "");
}

TEST(SortPortNames, KeepsTwoPortsOfOneName) {
  PortNames names = NamesFrom({"A (COM4)", "B (COM4)"});
  std::int32_t count = 2;
  SortPortNames(count, names);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(names[0], "COM4");
  EXPECT_EQ(names[1], "COM4");
}

TEST(SortPortNames, TakesAHundredAndNoMore) {
  PortNames names;
  for (std::size_t i = 0; i < names.size(); ++i) {
    names[i] = QStringLiteral("Port (COM%1)").arg(99 - static_cast<int>(i) % 99);
  }
  std::int32_t count = 1000;
  SortPortNames(count, names);
  EXPECT_EQ(count, 100);
  EXPECT_EQ(names[0], "COM1");
  EXPECT_EQ(names[99], "COM99");

  count = -1;
  SortPortNames(count, names);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(names[0], "");
}

TEST(PortNumberOf, KnowsNamesOfFourAndFiveCharacters) {
  EXPECT_EQ(PortNumberOf("COM3"), "3");
  EXPECT_EQ(PortNumberOf("COM12"), "12");
  EXPECT_EQ(PortNumberOf("NONE"), "E");
  EXPECT_EQ(PortNumberOf(""), "");
  EXPECT_EQ(PortNumberOf("COM"), "");
  EXPECT_EQ(PortNumberOf("COM123"), "");
}

TEST(IsPortAvailable, ComparesExactlyWithTheFirstCountNames) {
  const PortNames names = NamesFrom({"COM1", "COM3", "COM10"});
  EXPECT_TRUE(IsPortAvailable("COM3", 3, names));
  EXPECT_TRUE(IsPortAvailable("COM10", 3, names));
  EXPECT_FALSE(IsPortAvailable("COM10", 2, names));
  EXPECT_FALSE(IsPortAvailable("com3", 3, names));
  EXPECT_FALSE(IsPortAvailable("COM", 3, names));
  EXPECT_FALSE(IsPortAvailable("COM3 ", 3, names));
  EXPECT_FALSE(IsPortAvailable("COM1", 0, names));
  EXPECT_FALSE(IsPortAvailable("COM1", -5, names));
  EXPECT_FALSE(IsPortAvailable("COM2", 1000, names));
}

TEST(DevicePathOf, IsTheBareNameUpToNine) {
  EXPECT_EQ(DevicePathOf("COM1"), "COM1");
  EXPECT_EQ(DevicePathOf("COM9"), "COM9");
  EXPECT_EQ(DevicePathOf("COM0"), "COM0");
  EXPECT_EQ(DevicePathOf("COM09"), "COM09");
}

TEST(DevicePathOf, HasThePrefixFromTen) {
  EXPECT_EQ(DevicePathOf("COM10"), "\\\\.\\COM10");
  EXPECT_EQ(DevicePathOf("COM99"), "\\\\.\\COM99");
}

TEST(DevicePathOf, TakesNamesWithoutANumberAsTheyAre) {
  EXPECT_EQ(DevicePathOf(""), "");
  EXPECT_EQ(DevicePathOf("NONE"), "NONE");
  EXPECT_EQ(DevicePathOf("COM100"), "COM100");
  EXPECT_EQ(DevicePathOf("COM"), "COM");
  EXPECT_EQ(DevicePathOf("COM-5"), "COM-5");
  EXPECT_EQ(DevicePathOf("COM5x"), "COM5x");
}

TEST(ComposeFriendlyName, SaysProductNodeAndWhatIsInTheWay) {
  EXPECT_EQ(ComposeFriendlyName({"USB Adapter", "/dev/ttyUSB0", "", "COM3"}),
            "USB Adapter - /dev/ttyUSB0 (COM3)");
  EXPECT_EQ(ComposeFriendlyName({"USB Adapter", "/dev/ttyUSB0", "no permission: group dialout", "COM3"}),
            "USB Adapter - /dev/ttyUSB0, no permission: group dialout (COM3)");
}

TEST(ComposeFriendlyName, CannotBeFooledAboutThePort) {
  const QString hostile[] = {"Evil (COM9) adapter",         "(COM1)", "(CO\x01M8)", "((COM8)", "(COM(COM8)",
                             QStringLiteral("(C\u200bOM8)")};
  for (const QString& text : hostile) {
    EXPECT_EQ(ShortPortName(ComposeFriendlyName({text, "/dev/ttyUSB0", "", "COM33"})), "COM33");
    EXPECT_EQ(ShortPortName(ComposeFriendlyName({"Adapter", "/dev/" + text, text, "COM33"})), "COM33");
  }
  EXPECT_EQ(ComposeFriendlyName({"Evil (COM9)", "/dev/ttyUSB0", "", "COM3"}),
            "Evil [COM9) - /dev/ttyUSB0 (COM3)");
}

TEST(ComposeFriendlyName, RemovesWhatCannotBeSeen) {
  EXPECT_EQ(ComposeFriendlyName({QStringLiteral("A\r\n\x1b\u202e"
                                                "B\u2028"),
                                 "/dev/ttyUSB0", "", "COM3"}),
            "AB - /dev/ttyUSB0 (COM3)");
  const QString half(QChar(0xD800));
  EXPECT_EQ(ComposeFriendlyName({"A" + half + "B", "/dev/ttyUSB0", "", "COM3"}), "AB - /dev/ttyUSB0 (COM3)");
}

TEST(ComposeFriendlyName, KeepsTheBracketWhereItIsLookedFor) {
  const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");
  for (const QString& product : {QString(1000, 'x'), face.repeated(500), "y" + face.repeated(500)}) {
    const QString name = ComposeFriendlyName({product, "/dev/ttyUSB0", "in use by PID 1234", "COM99"});
    EXPECT_LE(name.size(), 250);
    EXPECT_TRUE(name.endsWith(" - /dev/ttyUSB0, in use by PID 1234 (COM99)")) << name.toStdString();
    EXPECT_EQ(ShortPortName(name), "COM99");
    EXPECT_TRUE(name.isValidUtf16());
  }
  const QString name = ComposeFriendlyName({"Adapter", "/dev/" + QString(4000, 'x'), "", "COM99"});
  EXPECT_EQ(name.size(), 250);
  EXPECT_EQ(ShortPortName(name), "COM99");
}

TEST(IsBeyondLastPort, AsksForAPortsNameWithThreeDigitsOrMore) {
  for (const char* name : {"COM100", "COM104", "COM4096", "COM99999999999999999999", "COM0100"}) {
    EXPECT_TRUE(IsBeyondLastPort(name)) << name;
  }
  for (const char* name :
       {"", "COM", "COM1", "COM99", "COM099", "COM1x4", "com104", "NONE", "LPT104", "COM 104"}) {
    EXPECT_FALSE(IsBeyondLastPort(name)) << name;
  }
}

}  // namespace
}  // namespace quarn
