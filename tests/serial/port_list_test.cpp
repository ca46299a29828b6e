#include "serial/port_list.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

class ScriptedSource final : public PortSource {
 public:
  explicit ScriptedSource(QStringList list) : m_list(std::move(list)) {}
  bool FriendlyNames(QStringList& names) override {
    if (!m_works) {
      return false;
    }
    names = m_list;
    return true;
  }
  void Become(const QStringList& list) { m_list = list; }
  void Break() { m_works = false; }

 private:
  QStringList m_list;
  bool m_works = true;
};

TEST(EnumeratePorts, KeepsTheSystemsOrderAndWords) {
  ScriptedSource source({"Second (COM10)", "First (COM2)"});
  FriendlyNameTable table;
  table[2] = "left over";
  std::int32_t count = 0;
  ASSERT_TRUE(EnumeratePorts(source, table, count));
  EXPECT_EQ(count, 2);
  EXPECT_EQ(table[0], "Second (COM10)");
  EXPECT_EQ(table[1], "First (COM2)");
  EXPECT_EQ(table[2], "");
}

TEST(EnumeratePorts, PassesOverNamesWithoutCom) {
  ScriptedSource source({"Printer (LPT1)", "", "modem (com3)", "TELECOM box", "Port (COM4)"});
  FriendlyNameTable table;
  std::int32_t count = 0;
  ASSERT_TRUE(EnumeratePorts(source, table, count));
  EXPECT_EQ(count, 2);
  EXPECT_EQ(table[0], "TELECOM box");
  EXPECT_EQ(table[1], "Port (COM4)");
}

TEST(EnumeratePorts, PassesOverNamesThatNoBufferHolds) {
  const QString longest = "(COM1)" + QString(kFriendlyNameCapacity - 6, 'x');
  ScriptedSource source({longest + "x", longest});
  FriendlyNameTable table;
  std::int32_t count = 0;
  ASSERT_TRUE(EnumeratePorts(source, table, count));
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[0], longest);
}

TEST(EnumeratePorts, EndsAtAHundred) {
  QStringList list("no port at all");
  for (int i = 0; i < 120; ++i) {
    list.append(QStringLiteral("Port %1 (COM1)").arg(i));
  }
  ScriptedSource source(list);
  FriendlyNameTable table;
  std::int32_t count = 0;
  ASSERT_TRUE(EnumeratePorts(source, table, count));
  EXPECT_EQ(count, 100);
  EXPECT_EQ(table[99], "Port 99 (COM1)");
}

/// Names that a system gives to devices of this kind, and that name no port from COM1 to COM99.
const QStringList kUnusable{"USB Serial Port (COM104)",
                            "pair (COM5->COM6)",
                            "Gadget COM7 serial",
                            "TELECOM box",
                            "(COM",
                            "(COM)",
                            "(COM8",
                            "COM9",
                            QString(250, 'x') + "(COM3)"};

TEST(CountPorts, CountsWhatIsListed) {
  QStringList many("no port at all");
  for (int i = 0; i < 120; ++i) many.append(QString("Port (COM%1)").arg(i));
  const QStringList mixed{"Printer (LPT1)", "TELECOM box", "Port (COM4)", QString(300, 'x') + "COM"};
  QStringList among = kUnusable;
  among.insert(3, "Port (COM4)");
  // The hundredth place counts for those that cannot be used, too.
  const QStringList late = QStringList(99, "TELECOM box") + QStringList{"Port (COM4)", "Port (COM5)"};
  for (const QStringList& list : {QStringList(), mixed, many, kUnusable, among, late}) {
    ScriptedSource source(list);
    PortConnection connection;
    std::int32_t counted = -2;
    ASSERT_TRUE(RefreshPortList(source, connection));
    ASSERT_TRUE(CountPorts(source, counted));
    EXPECT_EQ(counted, connection.portCount) << list.join(", ").toStdString();
  }
}

TEST(CountPorts, CountsNoNameThatNamesNoPort) {
  for (const QString& name : kUnusable) {
    ScriptedSource source({"Port (COM4)", name});
    std::int32_t counted = -1;
    ASSERT_TRUE(CountPorts(source, counted));
    EXPECT_EQ(counted, 1) << name.toStdString();
  }
}

TEST(CountPorts, TouchesNothingWhenThereIsNoList) {
  ScriptedSource source({"Port (COM4)"});
  source.Break();
  std::int32_t count = 7;
  EXPECT_FALSE(CountPorts(source, count));
  EXPECT_EQ(count, 7);
}

TEST(EnumeratePorts, TouchesNothingWhenThereIsNoList) {
  ScriptedSource source({"Port (COM1)"});
  source.Break();
  FriendlyNameTable table;
  table[0] = "before";
  std::int32_t count = 7;
  EXPECT_FALSE(EnumeratePorts(source, table, count));
  EXPECT_EQ(count, 7);
  EXPECT_EQ(table[0], "before");
}

TEST(RefreshPortList, ListsShortNamesInNumberOrder) {
  ScriptedSource source({"A (COM10)", "B (COM9)", "TELECOM", "C (COM2)", "D (COM100)"});
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portCount, 3);
  EXPECT_EQ(connection.portNames[0], "COM2");
  EXPECT_EQ(connection.portNames[1], "COM9");
  EXPECT_EQ(connection.portNames[2], "COM10");
  EXPECT_EQ(connection.portNames[3], "");
}

TEST(RefreshPortList, DropsAPortThatIsGone) {
  ScriptedSource source({"A (COM1)", "B (COM2)"});
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  source.Become({"B (COM2)"});
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portCount, 1);
  EXPECT_EQ(connection.portNames[0], "COM2");
  EXPECT_EQ(connection.portNames[1], "");
  source.Become({});
  ASSERT_TRUE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portCount, 0);
  EXPECT_EQ(connection.portNames[0], "");
}

TEST(RefreshPortList, KeepsThePreviousListWhenThereIsNoNewOne) {
  ScriptedSource source({"A (COM1)", "B (COM2)"});
  PortConnection connection;
  ASSERT_TRUE(RefreshPortList(source, connection));
  source.Break();
  EXPECT_FALSE(RefreshPortList(source, connection));
  EXPECT_EQ(connection.portCount, 2);
  EXPECT_EQ(connection.portNames[0], "COM1");
  EXPECT_EQ(connection.portNames[1], "COM2");
}

}  // namespace
}  // namespace quarn
