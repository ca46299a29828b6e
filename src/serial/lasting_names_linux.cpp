#include "serial/lasting_names_linux.h"

#include <libudev.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <utility>

#include "serial/folder_reader_linux.h"

namespace quarn {

namespace {

/// How long after an adapter was plugged in its names may still be missing. Usually it is a fraction of a
/// second; drivers that have to be loaded and busy machines take longer.
constexpr unsigned int kNamesComeWithinMs = 3000;

std::string AttributeOf(udev_device* device, const char* name) {
  const char* value = device != nullptr ? udev_device_get_sysattr_value(device, name) : nullptr;
  return value != nullptr ? value : "";
}

std::string ClaimOf(udev_device* device, udev_device* adapter) {
  const std::string maker = AttributeOf(adapter, "manufacturer");
  const std::string product = AttributeOf(adapter, "product");
  udev_device* usbInterface = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_interface");
  std::string claim;
  for (const std::string& part :
       {maker.empty() ? AttributeOf(adapter, "idVendor") : maker,
        product.empty() ? AttributeOf(adapter, "idProduct") : product, AttributeOf(adapter, "serial"),
        AttributeOf(usbInterface, "bInterfaceNumber"),
        AttributeOf(udev_device_get_parent(device), "port_number")}) {
    claim += part + '\n';
  }
  return claim;
}

bool IsNew(udev_device* adapter) {
  const std::string text = AttributeOf(adapter, "power/connected_duration");
  unsigned int ms = 0;
  return std::from_chars(text.data(), text.data() + text.size(), ms).ec == std::errc() &&
         ms < kNamesComeWithinMs;
}

/// The names in one folder, by the number of the device that they lead to.
using Names = std::map<dev_t, std::vector<std::string>>;

/// `path` is added to `folders` if it exists.
Names ReadNames(const std::string& path, std::vector<std::string>& folders) {
  Names names;
  const OpenFolder folder(::opendir(path.c_str()));
  if (!folder) {
    return names;
  }
  folders.push_back(path);
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string name = path + '/' + entry->d_name;
    if (!ReadLink(name)) {
      continue;
    }
    const ResolvedPath end = ResolvePath({}, name);
    if (!end.node.empty() && S_ISCHR(end.status.st_mode)) {
      names[end.status.st_rdev].push_back(name);
    }
  }
  for (auto& [number, list] : names) {
    std::sort(list.begin(), list.end());
  }
  return names;
}

/// A name that is claimed by several devices is a name of each, whichever it leads to.
void ShareNames(std::vector<NamelessDevice>& devices) {
  std::map<std::string, std::set<std::string>> claimed;
  for (const auto& [device, claim, isNew] : devices) {
    claimed[claim].insert(device.idNames.begin(), device.idNames.end());
  }
  for (auto& [device, claim, isNew] : devices) {
    if (!claim.empty()) {
      device.idNames.assign(claimed[claim].begin(), claimed[claim].end());
    }
  }
}

}  // namespace

NamelessDevice Nameless(SerialDevice device, udev_device* from) {
  udev_device* adapter = udev_device_get_parent_with_subsystem_devtype(from, "usb", "usb_device");
  if (adapter == nullptr) {
    return {std::move(device), {}, false};
  }
  return {std::move(device), ClaimOf(from, adapter), IsNew(adapter)};
}

void AddWithNamesFromFolders(std::vector<NamelessDevice> devices, const SystemRoots& roots,
                             DeviceList& list) {
  if (devices.empty()) {
    return;
  }
  const std::string serial = roots.dev + "/serial";
  if (::access(serial.c_str(), F_OK) == 0) {
    // One of the folders in it may come later.
    list.nameFolders.push_back(serial);
  }
  Names ids = ReadNames(serial + "/by-id", list.nameFolders);
  Names paths = ReadNames(serial + "/by-path", list.nameFolders);
  for (NamelessDevice& each : devices) {
    each.device.idNames = std::move(ids[each.device.number]);
    each.device.pathNames = std::move(paths[each.device.number]);
  }
  ShareNames(devices);
  for (auto& [device, claim, isNew] : devices) {
    if (isNew && (device.idNames.empty() || device.pathNames.empty())) {
      list.awaitsNames = true;
    } else {
      list.devices.push_back(std::move(device));
    }
  }
}

}  // namespace quarn
