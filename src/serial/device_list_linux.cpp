#include "serial/device_list_linux.h"

#include <libudev.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "serial/lasting_names_linux.h"
#include "serial/udev_objects_linux.h"

namespace quarn {

namespace {

bool IsSerialLine(udev_device* device) {
  const char* node = udev_device_get_devnode(device);
  const char* name = udev_device_get_sysname(device);
  if (node == nullptr || name == nullptr) {
    return false;
  }
  if (udev_device_get_parent(device) == nullptr && !std::string_view(name).starts_with("rfcomm")) {
    return false;
  }
  const char* portType = udev_device_get_sysattr_value(device, "type");
  return portType == nullptr || std::strcmp(portType, "0") != 0;
}

std::string ProductOf(udev_device* device) {
  if (const char* model = udev_device_get_property_value(device, "ID_MODEL_FROM_DATABASE")) {
    return model;
  }
  if (const char* model = udev_device_get_property_value(device, "ID_MODEL")) {
    std::string product = model;
    std::replace(product.begin(), product.end(), '_', ' ');
    return product;
  }
  // Owned by `device`; must not be released separately.
  udev_device* adapter = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
  const char* product = adapter != nullptr ? udev_device_get_sysattr_value(adapter, "product") : nullptr;
  return product != nullptr ? product : "";
}

/// `links` is udev's list: separated by blanks; a blank within a name is written \x20.
void TakeLastingNames(const char* links, const std::string& dev, SerialDevice& found) {
  std::istringstream words(links != nullptr ? links : "");
  for (std::string link; words >> link;) {
    if (link.starts_with(dev + "/serial/by-id/")) {
      found.idNames.push_back(link);
    } else if (link.starts_with(dev + "/serial/by-path/")) {
      found.pathNames.push_back(link);
    }
  }
  std::sort(found.idNames.begin(), found.idNames.end());
  std::sort(found.pathNames.begin(), found.pathNames.end());
}

/// The value from udev, or else from the adapter, with blanks written as udev does.
std::string PropertyOf(udev_device* device, const char* property, const char* attribute) {
  if (const char* value = udev_device_get_property_value(device, property)) {
    return value;
  }
  udev_device* adapter = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
  const char* value = adapter != nullptr ? udev_device_get_sysattr_value(adapter, attribute) : nullptr;
  std::string text = value != nullptr ? value : "";
  std::replace(text.begin(), text.end(), ' ', '_');
  return text;
}

/// The folder of the interface and the port's number in it; without the part that has the node's number.
std::string SocketOf(udev_device* device) {
  if (udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device") == nullptr) {
    return {};
  }
  std::string path = udev_device_get_syspath(device);
  path.erase(std::min(path.rfind("/tty/"), path.size()));
  const std::string node = std::string("/") + udev_device_get_sysname(device);
  if (path.ends_with(node)) {
    path.erase(path.size() - node.size());
  }
  const char* port = udev_device_get_sysattr_value(udev_device_get_parent(device), "port_number");
  return port != nullptr ? path + ':' + port : path;
}

/// All but the lasting names.
SerialDevice DescriptionOf(udev_device* device) {
  SerialDevice found;
  found.node = udev_device_get_devnode(device);
  found.number = udev_device_get_devnum(device);
  found.socket = SocketOf(device);
  found.identity.vendor = PropertyOf(device, "ID_VENDOR_ID", "idVendor");
  found.identity.model = PropertyOf(device, "ID_MODEL_ID", "idProduct");
  found.identity.serial = PropertyOf(device, "ID_SERIAL_SHORT", "serial");
  found.product = ProductOf(device);
  return found;
}

/// The file with udev's data about a device, for example "c188:0".
std::string RecordNameOf(dev_t number) {
  std::string name("c");
  return name.append(std::to_string(major(number))).append(":").append(std::to_string(minor(number)));
}

/// "/dev/ttyUSB10" as ("/dev/ttyUSB", 10), so that it sorts behind ttyUSB2.
std::tuple<std::string, unsigned long, std::string> SortKeyOf(const std::string& node) {
  const std::size_t digits = node.find_last_not_of("0123456789") + 1;
  const std::string number = node.substr(digits, 9);
  return {node.substr(0, digits), number.empty() ? 0 : std::stoul(number), node};
}

}  // namespace

namespace {

/// Every name except tty0, tty1 ...: reading the 64 virtual consoles, which are never serial lines, would
/// take longer than all the rest.
constexpr std::array kNamePatterns = {"tty[!0-9]*", "tt[!y]*", "t[!t]*", "[!t]*"};

bool Scan(udev_enumerate* enumerate) {
  return udev_enumerate_add_match_subsystem(enumerate, "tty") >= 0 &&
         std::all_of(kNamePatterns.begin(), kNamePatterns.end(),
                     [&](const char* pattern) {
                       return udev_enumerate_add_match_sysname(enumerate, pattern) >= 0;
                     }) &&
         udev_enumerate_scan_devices(enumerate) >= 0;
}

}  // namespace

std::optional<DeviceList> ListSerialDevices(const SystemRoots& roots) {
  const UdevContext context(udev_new());
  const UdevEnumerate enumerate(context ? udev_enumerate_new(context.get()) : nullptr);
  if (!enumerate || !Scan(enumerate.get())) {
    return std::nullopt;
  }
  // Without the udev service no device is ever marked as processed, so there is nothing to wait for.
  const bool serviceRuns = ::access((roots.udev + "/control").c_str(), F_OK) == 0;
  DeviceList list;
  std::vector<NamelessDevice> nameless;
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate.get())) {
    const UdevDevice device(udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
    if (!device || !IsSerialLine(device.get())) {
      continue;
    }
    if (serviceRuns && udev_device_get_is_initialized(device.get()) == 0) {
      // Its permanent names do not exist yet; a link made now would use a weaker name permanently.
      list.pending.push_back({roots.udev + "/data", RecordNameOf(udev_device_get_devnum(device.get()))});
      continue;
    }
    SerialDevice found = DescriptionOf(device.get());
    const char* links = udev_device_get_property_value(device.get(), "DEVLINKS");
    if (links == nullptr && !serviceRuns) {
      nameless.push_back(Nameless(std::move(found), device.get()));
      continue;
    }
    TakeLastingNames(links, roots.dev, found);
    list.devices.push_back(std::move(found));
  }
  AddWithNamesFromFolders(std::move(nameless), roots, list);
  for (SerialDevice& device : list.devices) {
    device.identity.name = device.idNames.empty() ? std::string() : device.idNames.front();
    device.identity.path = device.pathNames.empty() ? device.socket : device.pathNames.front();
  }
  std::sort(list.devices.begin(), list.devices.end(), [](const SerialDevice& a, const SerialDevice& b) {
    return SortKeyOf(a.node) < SortKeyOf(b.node);
  });
  return list;
}

}  // namespace quarn
