#include "serial/port_names.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(PortNumberOf, KnowsNamesOfFourAndFiveCharacters) {
  EXPECT_EQ(PortNumberOf("COM3"), "3");
  EXPECT_EQ(PortNumberOf("COM12"), "12");
  EXPECT_EQ(PortNumberOf("NONE"), "E");
  EXPECT_EQ(PortNumberOf(""), "");
  EXPECT_EQ(PortNumberOf("COM"), "");
  EXPECT_EQ(PortNumberOf("COM123"), "");
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
