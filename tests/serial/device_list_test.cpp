#include "serial/device_list_linux.h"

#include <gtest/gtest.h>
#include <sys/sysmacros.h>
// Its Vala-made headers use a C cast and a name of Qt's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <umockdev.h>
#pragma GCC diagnostic pop

#include "serial/port_source_linux.h"
#include "serial_fixtures.h"

namespace quarn {
namespace {

/// A device tree for one test, seen by every sysfs, /dev and udev access of this process.
class DeviceTree {
 public:
  DeviceTree() : m_bed(umockdev_testbed_new()) {
    gchar* root = umockdev_testbed_get_root_dir(m_bed);
    m_root = root;
    g_free(root);
  }
  DeviceTree(const DeviceTree&) = delete;
  DeviceTree& operator=(const DeviceTree&) = delete;
  ~DeviceTree() { g_object_unref(m_bed); }

  void Add(const std::string& description) {
    GError* error = nullptr;
    umockdev_testbed_add_from_string(m_bed, description.c_str(), &error);
    EXPECT_EQ(error, nullptr) << (error != nullptr ? error->message : "");
    g_clear_error(&error);
  }

  /// A tty device. `lines` are further lines of its description.
  std::string AddTty(const std::string& folder, const std::string& name, int majorNumber, int minorNumber,
                     const std::string& lines = {}) {
    const std::string path = folder + "/tty/" + name;
    const std::string number = std::to_string(majorNumber) + ':' + std::to_string(minorNumber);
    Add("P: " + path + "\nN: " + name + "\nE: DEVNAME=/dev/" + name +
        "\nE: SUBSYSTEM=tty\nE: MAJOR=" + std::to_string(majorNumber) +
        "\nE: MINOR=" + std::to_string(minorNumber) + "\nA: dev=" + number + "\n" + lines + "\n");
    // The test bed puts a link to a pseudo-terminal there, to be opened; nobody opens it here, and a
    // device node is no link. Its plain kind of character device is an empty file.
    const std::string node = m_root + "/dev/" + name;
    ::unlink(node.c_str());
    const FileDescriptor file(::open(node.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0660));
    EXPECT_TRUE(file.IsValid());
    return "/sys" + path;
  }

  /// A USB adapter with its port ttyUSB<n>, as its manufacturer would describe it.
  std::string AddAdapter(int n, const std::string& lines = {}, const std::string& product = "Adapter\\n") {
    const std::string usb = "/devices/pci0000:00/usb1/1-" + std::to_string(n + 1);
    Add("P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: product=" + product + "\n\n");
    const std::string serial = usb + "/1-1:1.0/ttyUSB" + std::to_string(n);
    Add("P: " + serial + "\nE: SUBSYSTEM=usb-serial\n\n");
    return AddTty(serial, "ttyUSB" + std::to_string(n), 188, n, lines);
  }

  /// A driver's place for a chip at /dev/ttyS<n>.
  void AddBuiltIn(int n, const std::string& portType) {
    const std::string chip = "/devices/platform/serial8250." + std::to_string(n);
    Add("P: " + chip + "\nE: SUBSYSTEM=platform\n\n");
    AddTty(chip, "ttyS" + std::to_string(n), 4, 64 + n, "A: type=" + portType + "\\n\n");
  }

  /// What udev would make: a name in /dev/serial that leads to the node.
  void LinkSerial(const std::string& kind, const std::string& name, const std::string& node) {
    const std::string folder = m_root + "/dev/serial/" + kind;
    EXPECT_EQ(g_mkdir_with_parents(folder.c_str(), 0755), 0);
    ::unlink((folder + '/' + name).c_str());
    EXPECT_EQ(::symlink(("../../" + node).c_str(), (folder + '/' + name).c_str()), 0);
  }

  void Announce(const std::string& device, const char* action) {
    umockdev_testbed_uevent(m_bed, device.c_str(), action);
  }
  void Remove(const std::string& device) {
    Announce(device, "remove");
    umockdev_testbed_remove_device(m_bed, device.c_str());
  }

 private:
  UMockdevTestbed* m_bed;
  std::string m_root;
};

/// Nothing of the real system's udev service or locks.
SystemRoots QuietRoots() {
  SystemRoots roots;
  roots.udev = "/none";
  roots.lockFiles = "/none";
  return roots;
}

std::vector<std::string> NodesOf(const std::optional<DeviceList>& list) {
  EXPECT_TRUE(list.has_value());
  std::vector<std::string> nodes;
  for (const SerialDevice& device : list ? list->devices : std::vector<SerialDevice>()) {
    nodes.push_back(device.node);
  }
  return nodes;
}

QStringList List(LinuxPortSource& source) {
  QStringList names;
  EXPECT_TRUE(source.FriendlyNames(names));
  return names;
}

/// The list once an event on its way has arrived; events travel through a socket.
QStringList ListUntil(LinuxPortSource& source, qsizetype count) {
  QStringList names = List(source);
  for (int i = 0; i < 500 && names.size() != count; ++i) {
    ::usleep(10000);
    names = List(source);
  }
  return names;
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

TEST(ListSerialDevices, OrdersPinPathsByHowLongTheyLast) {
  DeviceTree tree;
  tree.AddAdapter(
      0,
      "E: DEVLINKS=/dev/serial/by-path/pci-1 /dev/other /dev/serial/by-id/usb-B /dev/serial/by-id/usb-A\n");
  const std::optional<DeviceList> list = ListSerialDevices(QuietRoots());
  ASSERT_EQ(NodesOf(list).size(), 1U);
  EXPECT_EQ(list->devices[0].number, makedev(188, 0));
  EXPECT_EQ(list->devices[0].pinPaths,
            (std::vector<std::string>{"/dev/serial/by-id/usb-A", "/dev/serial/by-id/usb-B",
                                      "/dev/serial/by-path/pci-1", "/dev/ttyUSB0"}));
}

TEST(LinuxPortSource, PinsAndNamesAnAdapter) {
  DeviceTree tree;
  tree.AddAdapter(0, "E: DEVLINKS=/dev/serial/by-id/usb-A\nE: ID_MODEL=Evil_(COM9)_box\n");
  tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  tree.AddBuiltIn(1, "4");
  tree.AddBuiltIn(2, "0");
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  EXPECT_EQ(List(source),
            (QStringList{"Evil [COM9) box - /dev/ttyUSB0 (COM1)", "Serial Port - /dev/ttyS1 (COM2)"}));
  EXPECT_EQ(scratch.TargetOf("ports/COM1"), "/dev/serial/by-id/usb-A");
  EXPECT_EQ(scratch.TargetOf("ports/COM2"), "/dev/ttyS1");
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
  EXPECT_EQ(g_warnings, QStringList(QStringLiteral("the ports folder cannot be used: %1: %2")
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
  const std::string lines = "E: DEVLINKS=/dev/serial/by-id/usb-A\n";
  const std::string first = tree.AddAdapter(0, lines);
  tree.LinkSerial("by-id", "usb-A", "ttyUSB0");
  const ScratchFolder scratch;
  LinuxPortSource source(QString::fromStdString(scratch.At("ports")), QuietRoots());
  EXPECT_EQ(List(source), QStringList("Adapter - /dev/ttyUSB0 (COM1)"));

  tree.Remove(first);
  EXPECT_EQ(ListUntil(source, 0), QStringList());

  const std::string second = tree.AddAdapter(5);
  tree.Announce(second, "add");
  EXPECT_EQ(ListUntil(source, 1), QStringList("Adapter - /dev/ttyUSB5 (COM2)"));

  // Back, but at another place and thus under another node.
  const std::string again = tree.AddAdapter(7, lines);
  tree.LinkSerial("by-id", "usb-A", "ttyUSB7");
  tree.Announce(again, "add");
  EXPECT_EQ(ListUntil(source, 2),
            (QStringList{"Adapter - /dev/ttyUSB7 (COM1)", "Adapter - /dev/ttyUSB5 (COM2)"}));
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
