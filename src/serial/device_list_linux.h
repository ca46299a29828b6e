#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "serial/link_path_linux.h"
#include "serial/pin_records_linux.h"

namespace quarn {

/// A serial line that the kernel knows.
struct SerialDevice {
  std::string node;  ///< /dev/ttyUSB0
  dev_t number = 0;
  std::vector<std::string> idNames;    ///< its names in /dev/serial/by-id; another device may claim them too
  std::vector<std::string> pathNames;  ///< those in /dev/serial/by-path
  std::string socket;  ///< where a USB adapter is plugged in, as sysfs names it, whether udev runs or not
  DeviceIdentity identity;
  std::string product;  ///< UTF-8, as the device or the hardware database says it; may be empty
};

struct DeviceList {
  std::vector<SerialDevice> devices;  ///< sorted by node, numbers by value (ttyUSB2 before ttyUSB10)
  /// Devices that are plugged in but that udev has not finished with; entries that change when it has.
  std::vector<FolderEntry> pending;
};

/// The real serial lines present: tty devices with a device behind them, and Bluetooth's rfcomm lines,
/// which have one only while connected. Not among them: consoles, pseudo-terminals, and the places that a
/// driver reserves for chips that are not there (its port type is 0).
///
/// Nothing when the list cannot be obtained. No device is opened.
std::optional<DeviceList> ListSerialDevices(const SystemRoots& roots = {});

}  // namespace quarn
