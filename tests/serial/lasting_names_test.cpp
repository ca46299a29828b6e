// The names in /dev/serial, where udev's data cannot be seen.

#include "serial/lasting_names_linux.h"

#include <QCoreApplication>

#include "device_tree.h"
#include "serial/device_list_linux.h"

namespace quarn {
namespace {

using Texts = std::vector<std::string>;

/// What the adapter says of itself, and since when it has been plugged in.
std::string Attributes(const std::string& serial, const std::string& connectedMs = "100000") {
  return "A: idVendor=0403\\n\nA: idProduct=6001\\n\nA: serial=" + serial +
         "\\n\nA: power/connected_duration=" + connectedMs + "\\n\n";
}

class LastingNames : public testing::Test {
 protected:
  std::string Plug(int n, const std::string& serial, const std::string& connectedMs = "100000") {
    return m_tree.AddAdapter(n, {}, "Adapter\\n", Attributes(serial, connectedMs));
  }
  static DeviceList Listed() {
    const std::optional<DeviceList> list = ListSerialDevices(QuietRoots());
    EXPECT_TRUE(list.has_value());
    return list.value_or(DeviceList());
  }
  [[nodiscard]] QString Folder() const { return QString::fromStdString(m_scratch.At("ports")); }

  int m_argc = 1;
  char m_name[6] = "ports";
  char* m_argv[2] = {m_name, nullptr};
  // For those who sleep until something changes.
  QCoreApplication m_loop{m_argc, m_argv};
  DeviceTree m_tree;
  ScratchFolder m_scratch;
};

TEST_F(LastingNames, AreThoseInTheFolders) {
  Plug(0, "A1");
  m_tree.AddBuiltIn(0, "4");
  m_tree.LinkSerial("by-id", "usb-B", "ttyUSB0");
  m_tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  m_tree.LinkSerial("by-path", "left", "ttyUSB0");
  m_tree.LinkTo("serial/by-path/through-another", "../by-id/usb-A");
  m_tree.LinkSerial("by-path", "board", "ttyS0");
  const DeviceList list = Listed();
  ASSERT_EQ(list.devices.size(), 2U);
  EXPECT_EQ(list.devices[0].idNames, Texts());
  EXPECT_EQ(list.devices[0].pathNames, Texts{"/dev/serial/by-path/board"});
  EXPECT_EQ(list.devices[1].idNames, (Texts{"/dev/serial/by-id/usb-A", "/dev/serial/by-id/usb-B"}));
  EXPECT_EQ(list.devices[1].pathNames,
            (Texts{"/dev/serial/by-path/left", "/dev/serial/by-path/through-another"}));
  EXPECT_EQ(list.devices[1].identity,
            (DeviceIdentity{"/dev/serial/by-id/usb-A", "/dev/serial/by-path/left", "0403", "6001", "A1"}));
}

TEST_F(LastingNames, AreOnlyLinksThatLeadToADevice) {
  Plug(0, "A1");
  m_tree.LinkSerial("by-id", "usb-gone", "ttyUSB7");
  m_tree.LinkTo("serial/by-id/usb-loop", "usb-loop");
  m_tree.LinkTo("serial/by-id/usb-folder", "..");
  const DeviceList list = Listed();
  ASSERT_EQ(list.devices.size(), 1U);
  EXPECT_EQ(list.devices[0].idNames, Texts());
  EXPECT_EQ(list.devices[0].pathNames, Texts());
  EXPECT_EQ(list.devices[0].identity.path, list.devices[0].socket);
}

TEST_F(LastingNames, AreThoseOfUdevWhereItsDataCanBeSeen) {
  m_tree.AddAdapter(0, "E: DEVLINKS=/dev/serial/by-id/usb-A\n");
  m_tree.LinkSerial("by-id", "usb-B", "ttyUSB0");
  m_tree.LinkSerial("by-path", "left", "ttyUSB0");
  const DeviceList list = Listed();
  ASSERT_EQ(list.devices.size(), 1U);
  EXPECT_EQ(list.devices[0].idNames, Texts{"/dev/serial/by-id/usb-A"});
  EXPECT_EQ(list.devices[0].pathNames, Texts());
  EXPECT_EQ(list.nameFolders, Texts()) << "udev reports changes of its data itself";
}

TEST_F(LastingNames, AreSharedByThoseThatClaimThem) {
  Plug(0, "0001");
  Plug(1, "0001");
  Plug(2, "0002");
  m_tree.LinkSerial("by-id", "usb-0001", "ttyUSB1");
  m_tree.LinkSerial("by-id", "usb-0002", "ttyUSB2");
  const DeviceList list = Listed();
  ASSERT_EQ(list.devices.size(), 3U);
  EXPECT_EQ(list.devices[0].idNames, Texts{"/dev/serial/by-id/usb-0001"});
  EXPECT_EQ(list.devices[1].idNames, Texts{"/dev/serial/by-id/usb-0001"});
  EXPECT_EQ(list.devices[2].idNames, Texts{"/dev/serial/by-id/usb-0002"});
}

TEST_F(LastingNames, OfADeviceJustPluggedInAreAwaited) {
  Plug(0, "A1", "2999");
  const auto isAwaited = [] {
    const DeviceList list = Listed();
    EXPECT_NE(list.awaitsNames, !list.devices.empty());
    return list.awaitsNames;
  };
  EXPECT_TRUE(isAwaited());
  m_tree.LinkSerial("by-path", "left", "ttyUSB0");
  EXPECT_TRUE(isAwaited()) << "the other name comes, too";
  m_tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  EXPECT_FALSE(isAwaited());
  m_tree.UnlinkSerial("by-path", "left");
  EXPECT_TRUE(isAwaited());
  m_tree.SetAdapterAttribute("power/connected_duration", "3000\n");
  EXPECT_FALSE(isAwaited());
}

TEST_F(LastingNames, APortAwaitsThemAndGetsTheBestOne) {
  Plug(0, "A1", "200");
  LinuxPortSource source(Folder(), QuietRoots());
  EXPECT_EQ(List(source), QList<Port>());
  EXPECT_EQ(source.Revision(), std::nullopt) << "somebody has to ask again";
  m_tree.LinkSerial("by-path", "left", "ttyUSB0");
  EXPECT_EQ(List(source), QList<Port>());
  m_tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  EXPECT_EQ(List(source), (QList<Port>{{"COM1", "Adapter - /dev/ttyUSB0 (COM1)"}}));
  EXPECT_EQ(m_scratch.TargetOf("ports/COM1"), "/dev/serial/by-id/usb-A");
  EXPECT_NE(source.Revision(), std::nullopt);
}

TEST_F(LastingNames, APortIsListedWithoutThemWhenNoneCome) {
  Plug(0, "A1", "200");
  LinuxPortSource source(Folder(), QuietRoots());
  EXPECT_EQ(List(source), QList<Port>());
  m_tree.SetAdapterAttribute("power/connected_duration", "3000\n");
  EXPECT_EQ(List(source), (QList<Port>{{"COM1", "Adapter - /dev/ttyUSB0 (COM1)"}}));
  EXPECT_NE(source.Revision(), std::nullopt);
  // What the listing itself has changed.
  List(source);
  const std::uint64_t before = source.ListingCount();
  List(source);
  EXPECT_EQ(source.ListingCount(), before);
}

TEST_F(LastingNames, ThatComeAndGoAreNoticed) {
  Plug(0, "A1");
  LinuxPortSource source(Folder(), QuietRoots());
  List(source);
  const auto isListedAgain = [&] {
    const std::uint64_t before = source.ListingCount();
    List(source);
    const bool listed = source.ListingCount() != before;
    // What the listing itself has changed.
    List(source);
    return listed;
  };
  EXPECT_FALSE(isListedAgain());
  m_tree.LinkSerial("by-path", "left", "ttyUSB0");
  EXPECT_TRUE(isListedAgain()) << "with the folders";
  m_tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  EXPECT_TRUE(isListedAgain()) << "with one more folder";
  m_tree.LinkSerial("by-id", "usb-B", "ttyUSB0");
  EXPECT_TRUE(isListedAgain());
  m_tree.UnlinkSerial("by-id", "usb-B");
  EXPECT_TRUE(isListedAgain());
  EXPECT_FALSE(isListedAgain());
  EXPECT_NE(source.Revision(), std::nullopt) << "nobody has to look";
}

}  // namespace
}  // namespace quarn
