#include "serial/device_list_linux.h"

#include "device_tree.h"

namespace quarn {
namespace {

std::vector<std::string> NodesOf(const std::optional<DeviceList>& list) {
  EXPECT_TRUE(list.has_value());
  std::vector<std::string> nodes;
  for (const SerialDevice& device : list ? list->devices : std::vector<SerialDevice>()) {
    nodes.push_back(device.node);
  }
  return nodes;
}

/// The list once an event on its way has arrived; events travel through a socket.
QList<Port> ListUntil(LinuxPortSource& source, qsizetype count) {
  QList<Port> ports = List(source);
  for (int i = 0; i < 500 && ports.size() != count; ++i) {
    ::usleep(10000);
    ports = List(source);
  }
  return ports;
}

TEST(ListSerialDevices, HasOnlyRealLines) {
  DeviceTree tree;
  tree.AddAdapter(0);
  tree.AddBuiltIn(0, "4");
  tree.AddBuiltIn(1, "0");
  tree.AddTty("/devices/virtual", "tty1", 4, 1);
  tree.AddTty("/devices/virtual", "ptmx", 5, 2);
  tree.AddTty("/devices/virtual", "console", 5, 1);
  tree.AddTty("/devices/virtual", "rfcomm0", 216, 0);
  EXPECT_EQ(NodesOf(ListSerialDevices(QuietRoots())),
            (std::vector<std::string>{"/dev/rfcomm0", "/dev/ttyS0", "/dev/ttyUSB0"}));
}

TEST(ListSerialDevices, IsEmptyWithoutDevices) {
  DeviceTree tree;
  tree.AddTty("/devices/virtual", "tty1", 4, 1);
  EXPECT_TRUE(NodesOf(ListSerialDevices(QuietRoots())).empty());
}

TEST(ListSerialDevices, OrdersByNumber) {
  DeviceTree tree;
  tree.AddAdapter(10);
  tree.AddAdapter(9);
  tree.AddAdapter(2);
  EXPECT_EQ(NodesOf(ListSerialDevices(QuietRoots())),
            (std::vector<std::string>{"/dev/ttyUSB2", "/dev/ttyUSB9", "/dev/ttyUSB10"}));
}

TEST(ListSerialDevices, TakesTheBestProductName) {
  DeviceTree tree;
  tree.AddAdapter(0, "E: ID_MODEL=My_small_Adapter\nE: ID_MODEL_FROM_DATABASE=Known as this\n");
  tree.AddAdapter(1, "E: ID_MODEL=My_small_Adapter\n");
  tree.AddAdapter(2);
  tree.AddBuiltIn(0, "4");
  const std::optional<DeviceList> list = ListSerialDevices(QuietRoots());
  ASSERT_EQ(NodesOf(list).size(), 4U);
  EXPECT_EQ(list->devices[0].product, "");
  EXPECT_EQ(list->devices[1].product, "Known as this");
  EXPECT_EQ(list->devices[2].product, "My small Adapter");
  EXPECT_EQ(list->devices[3].product, "Adapter");
}

TEST(ListSerialDevices, KnowsLastingNamesAndWhatTellsADeviceFromOthers) {
  DeviceTree tree;
  tree.AddAdapter(
      0,
      "E: DEVLINKS=/dev/serial/by-path/pci-1 /dev/other /dev/serial/by-id/usb-B /dev/serial/by-id/usb-A\n"
      "E: ID_VENDOR_ID=0403\nE: ID_MODEL_ID=6001\nE: ID_SERIAL_SHORT=A6008isP\n");
  const std::optional<DeviceList> list = ListSerialDevices(QuietRoots());
  ASSERT_EQ(NodesOf(list).size(), 1U);
  const SerialDevice& device = list->devices[0];
  EXPECT_EQ(device.number, makedev(188, 0));
  EXPECT_EQ(device.idNames, (std::vector<std::string>{"/dev/serial/by-id/usb-A", "/dev/serial/by-id/usb-B"}));
  EXPECT_EQ(device.pathNames, std::vector<std::string>{"/dev/serial/by-path/pci-1"});
  EXPECT_EQ(device.identity, (DeviceIdentity{"/dev/serial/by-id/usb-A", "/dev/serial/by-path/pci-1", "0403",
                                             "6001", "A6008isP"}));
}

TEST(ListSerialDevices, AsksTheAdapterItselfWhereUdevKnowsNothing) {
  DeviceTree tree;
  const std::string usb = "/devices/pci0000:00/usb1/1-1";
  tree.Add("P: " + usb +
           "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=0403\\n\nA: idProduct=6001\\n\n"
           "A: serial=No 7\\n\n\n");
  tree.AddTty(usb + "/1-1:1.0", "ttyUSB0", 188, 0);
  const std::optional<DeviceList> list = ListSerialDevices(QuietRoots());
  ASSERT_EQ(NodesOf(list).size(), 1U);
  EXPECT_EQ(list->devices[0].identity,
            (DeviceIdentity{"", "/sys" + usb + "/1-1:1.0", "0403", "6001", "No_7"}));
}

TEST(LinuxPortSource, PinsAndNamesAnAdapter) {
  DeviceTree tree;
  tree.AddAdapter(0,
                  "E: DEVLINKS=/dev/serial/by-id/usb-A\nE: ID_SERIAL_SHORT=A\nE: ID_MODEL=Evil_(COM9)_box\n");
  tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  tree.AddBuiltIn(1, "4");
  tree.AddBuiltIn(2, "0");
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  EXPECT_EQ(List(source), (QList<Port>{{"COM1", "Evil [COM9) box - /dev/ttyUSB0 (COM1)"},
                                       {"COM2", "Serial Port - /dev/ttyS1 (COM2)"}}));
  EXPECT_EQ(scratch.TargetOf("ports/COM1"), "/dev/serial/by-id/usb-A");
  EXPECT_EQ(scratch.TargetOf("ports/COM2"), "/dev/ttyS1");
}

TEST(LinuxPortSource, ListsInTheOrderOfTheNumbers) {
  DeviceTree tree;
  QStringList expected;
  for (int n = 1; n <= 11; ++n) {
    tree.AddAdapter(n);
    expected.append(QStringLiteral("COM%1").arg(n));
  }
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  QStringList names;
  for (const Port& port : List(source)) names.append(port.name);
  EXPECT_EQ(names, expected);
}

QStringList g_warnings;

TEST(LinuxPortSource, TellsOnceThatTheFolderTakesNoLinks) {
  DeviceTree tree;
  tree.AddAdapter(0);
  tree.AddAdapter(1);
  const ScratchFolder scratch;
  scratch.Link("ports", "missing");
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  g_warnings.clear();
  const QtMessageHandler former =
      qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtWarningMsg) g_warnings.append(text);
      });
  EXPECT_TRUE(List(source).isEmpty());
  source.Forget();
  EXPECT_TRUE(List(source).isEmpty());
  qInstallMessageHandler(former);
  EXPECT_EQ(g_warnings, QStringList(QStringLiteral("the ports folder cannot be used: \"%1\": %2")
                                        .arg(QString::fromStdString(scratch.At("ports")),
                                             QStringLiteral("No such file or directory"))));
  // The far end of the link is made: now there is a folder.
  scratch.Folder("missing");
  source.Forget();
  EXPECT_EQ(List(source).size(), 2);
}

TEST(LinuxPortSource, WithoutDevicesMakesNoFolder) {
  DeviceTree tree;
  tree.AddBuiltIn(0, "0");
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  EXPECT_TRUE(List(source).isEmpty());
  struct stat status {};
  EXPECT_NE(::stat(scratch.At("ports").c_str(), &status), 0);
}

TEST(LinuxPortSource, AnAdapterKeepsItsNumberThroughUnplugging) {
  DeviceTree tree;
  const std::string lines = "E: DEVLINKS=/dev/serial/by-id/usb-A\nE: ID_SERIAL_SHORT=A\n";
  const std::string first = tree.AddAdapter(0, lines);
  tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  EXPECT_EQ(List(source), (QList<Port>{{"COM1", "Adapter - /dev/ttyUSB0 (COM1)"}}));

  tree.Remove(first);
  EXPECT_EQ(ListUntil(source, 0), QList<Port>());

  const std::string second = tree.AddAdapter(5);
  tree.Announce(second, "add");
  EXPECT_EQ(ListUntil(source, 1), (QList<Port>{{"COM2", "Adapter - /dev/ttyUSB5 (COM2)"}}));

  // Back, but at another place and thus under another node.
  const std::string again = tree.AddAdapter(7, lines);
  tree.LinkSerial("by-id", "usb-A", "ttyUSB7");
  tree.Announce(again, "add");
  EXPECT_EQ(ListUntil(source, 2), (QList<Port>{{"COM1", "Adapter - /dev/ttyUSB7 (COM1)"},
                                               {"COM2", "Adapter - /dev/ttyUSB5 (COM2)"}}));
}

TEST(LinuxPortSource, NoticesAnEventOfUdevAlone) {
  DeviceTree tree;
  const std::string device = tree.AddAdapter(0);
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  List(source);
  List(source);
  const std::uint64_t before = source.ListingCount();
  List(source);
  EXPECT_EQ(source.ListingCount(), before);
  tree.Announce(device, "change");
  for (int i = 0; i < 500 && source.ListingCount() == before; ++i) {
    ::usleep(10000);
    List(source);
  }
  EXPECT_EQ(source.ListingCount(), before + 1);
}

TEST(LinuxPortSource, WaitsForUdevToFinishWithADevice) {
  DeviceTree tree;
  tree.AddAdapter(0);
  const ScratchFolder scratch;
  SystemRoots roots = QuietRoots();
  roots.udev = scratch.At("udev");
  scratch.Folder("udev");
  scratch.Folder("udev/data");
  scratch.File("udev/control");
  const std::optional<DeviceList> list = ListSerialDevices(roots);
  ASSERT_TRUE(list.has_value());
  EXPECT_TRUE(list->devices.empty());
  ASSERT_EQ(list->pending.size(), 1U);
  EXPECT_EQ(list->pending[0].folder, roots.udev + "/data");
  EXPECT_EQ(list->pending[0].name, "c188:0");

  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), roots);
  EXPECT_TRUE(List(source).isEmpty());
  const std::uint64_t before = source.ListingCount();
  scratch.File("udev/data/c188:0");
  List(source);
  EXPECT_GT(source.ListingCount(), before);
}

}  // namespace
}  // namespace quarn
