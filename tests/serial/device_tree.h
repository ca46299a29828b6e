#pragma once

#include <gtest/gtest.h>
#include <sys/sysmacros.h>
// Its Vala-made headers use a C cast and a name of Qt's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <umockdev.h>
#pragma GCC diagnostic pop

#include <string>

#include "serial/port_source_linux.h"
#include "serial_fixtures.h"

namespace quarn {

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

  /// A USB adapter with its port ttyUSB<n>, which no device has been yet, as its manufacturer would describe
  /// it. `lines` are further lines of the port's description, `attributes` of the adapter's.
  std::string AddAdapter(int n, const std::string& lines = {}, const std::string& product = "Adapter\\n",
                         const std::string& attributes = {}) {
    const std::string usb = "/devices/pci0000:00/usb1/1-" + std::to_string(++m_adapters);
    Add("P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: product=" + product + "\n" + attributes +
        "\n");
    const std::string serial = usb + "/1-1:1.0/port" + std::to_string(m_adapters);
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
    LinkTo("serial/" + kind + '/' + name, "../../" + node);
  }
  /// A symbolic link with this text in /dev or in a folder there.
  void LinkTo(const std::string& name, const std::string& text) {
    const std::string path = m_root + "/dev/" + name;
    EXPECT_EQ(g_mkdir_with_parents(path.substr(0, path.rfind('/')).c_str(), 0755), 0);
    ::unlink(path.c_str());
    EXPECT_EQ(::symlink(text.c_str(), path.c_str()), 0);
  }

  /// Another device of the same kind has taken the place of this one.
  void SetProperty(const std::string& device, const char* property, const char* value) {
    umockdev_testbed_set_property(m_bed, device.c_str(), property, value);
  }

  /// Of the adapter that was added last.
  void SetAdapterAttribute(const char* attribute, const char* value) {
    const std::string usb = "/sys/devices/pci0000:00/usb1/1-" + std::to_string(m_adapters);
    umockdev_testbed_set_attribute(m_bed, usb.c_str(), attribute, value);
  }

  void UnlinkSerial(const std::string& kind, const std::string& name) {
    EXPECT_EQ(::unlink((m_root + "/dev/serial/" + kind + '/' + name).c_str()), 0) << name;
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
  int m_adapters = 0;
};

/// Nothing of the real system's udev service or locks.
inline SystemRoots QuietRoots() {
  SystemRoots roots;
  roots.udev = "/none";
  roots.lockFiles = "/none";
  return roots;
}

inline QList<Port> List(LinuxPortSource& source) {
  const std::optional<QList<Port>> ports = source.Ports();
  EXPECT_TRUE(ports);
  return ports.value_or(QList<Port>());
}

}  // namespace quarn
