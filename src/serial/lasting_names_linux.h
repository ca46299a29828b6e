#pragma once

#include <string>
#include <vector>

#include "serial/device_list_linux.h"

struct udev_device;

namespace quarn {

// The names of serial lines in /dev/serial, for systems whose udev cannot be asked: in a sandbox its data is
// not visible, but the folders are.

/// A device without names so far, and what decides whether it can get some.
struct NamelessDevice {
  SerialDevice device;
  /// What udev would make its name in by-id from. Devices with the same text claim the same name, which leads
  /// to only one of them. Empty if the device is not on USB.
  std::string claim;
  /// Plugged in so recently that its names may not exist yet.
  bool isNew = false;
};

NamelessDevice Nameless(SerialDevice device, udev_device* from);

/// Adds the devices to the list, with the names that lead to them, in the order in which udev's data has
/// them. A new device without a name of either kind is not added: a link made now would use a weaker name
/// permanently. Instead the list says that it is awaited. Each folder is read once.
void AddWithNamesFromFolders(std::vector<NamelessDevice> devices, const SystemRoots& roots, DeviceList& list);

}  // namespace quarn
