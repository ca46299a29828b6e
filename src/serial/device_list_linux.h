#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "serial/link_path_linux.h"
#include "serial/pin_records_linux.h"

namespace quarn {

/// A serial line known to the kernel.
struct SerialDevice {
  std::string node;  ///< /dev/ttyUSB0
  dev_t number = 0;
  std::vector<std::string> idNames;  ///< its names in /dev/serial/by-id, which another device may also claim
  std::vector<std::string> pathNames;  ///< its names in /dev/serial/by-path
  std::string socket;  ///< where a USB adapter is plugged in, as sysfs names it, whether udev runs or not
  DeviceIdentity identity;
  std::string product;  ///< UTF-8, from the device or the hardware database; may be empty
};

struct DeviceList {
  std::vector<SerialDevice> devices;  ///< sorted by node, numbers by value (ttyUSB2 before ttyUSB10)
  /// Devices that are plugged in but not yet processed by udev; these entries change when they are.
  std::vector<FolderEntry> pending;
  /// Without udev's data: the existing folders whose entries are names of devices.
  std::vector<std::string> nameFolders;
  /// Without udev's data: a device is left out because its names may still come. It is listed without them a
  /// few seconds after it was plugged in, which nothing reports.
  bool awaitsNames = false;
};

/// The real serial lines present: tty devices with a device behind them, and Bluetooth's rfcomm lines, which
/// have one only while connected. Not included: consoles, pseudo-terminals, and entries that a driver
/// reserves for absent chips (port type 0).
///
/// Lasting names are those in udev's data. Where that cannot be seen, as in a sandbox, they are read from the
/// folders in /dev/serial.
///
/// Returns nullopt if the list cannot be obtained. Opens no device.
std::optional<DeviceList> ListSerialDevices(const SystemRoots& roots = {});

}  // namespace quarn
