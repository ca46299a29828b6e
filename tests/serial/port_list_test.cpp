#include "serial/port_list.h"

#include <gtest/gtest.h>

#include "support/listed_ports.h"

namespace quarn::test {
namespace {

TEST(RefreshPortList, TakesTheNamesInTheirOrder) {
  ListedPorts source(Adapters({"COM2", "COM9", "COM9", "COM10"}));
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portNames, (QStringList{"COM2", "COM9", "COM9", "COM10"}));
}

TEST(RefreshPortList, DropsAPortThatIsGone) {
  ListedPorts source(Adapters({"COM1", "COM2"}));
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  source.present = Adapters({"COM2"});
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portNames, QStringList{"COM2"});
  source.present.clear();
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portNames, QStringList());
}

TEST(RefreshPortList, KeepsThePreviousListWhenThereIsNoNewOne) {
  ListedPorts source(Adapters({"COM1", "COM2"}));
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  source.works = false;
  EXPECT_FALSE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portNames, (QStringList{"COM1", "COM2"}));
}

}  // namespace
}  // namespace quarn::test
