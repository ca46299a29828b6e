#include "serial/port_pins_linux.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>

namespace quarn {

namespace {

/// How often a number may be snatched away by another process before the device waits for the next
/// listing.
constexpr int kAttempts = 100;

/// The number that a built-in line has by custom: ttyS0 is COM1.
std::optional<int> CustomaryNumber(const std::string& node) {
  const std::size_t name = node.rfind('/') + 1;
  const std::string digits = node.substr(std::min(node.size(), name + 4));
  if (node.compare(name, 4, "ttyS") != 0 || digits.empty() || digits.size() > 2 ||
      digits.find_first_not_of("0123456789") != std::string::npos) {
    return std::nullopt;
  }
  const int number = std::stoi(digits) + 1;
  return number <= kHighestPort ? std::optional(number) : std::nullopt;
}

bool IsPinned(const SerialDevice& device, const std::vector<PortLink>& links) {
  return std::any_of(links.begin(), links.end(), [&](const PortLink& link) {
    return !link.target.node.empty() && S_ISCHR(link.target.status.st_mode) &&
           link.target.status.st_rdev == device.number;
  });
}

/// The most lasting of the device's paths that leads to it. Two adapters without serial numbers claim
/// one by-id name between them; it leads to only one of the two.
std::optional<std::string> PinPathOf(const SerialDevice& device) {
  for (const std::string& path : device.pinPaths) {
    const ResolvedPath end = ResolvePath({}, path);
    if (!end.node.empty() && S_ISCHR(end.status.st_mode) && end.status.st_rdev == device.number) {
      return path;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<PinChoice> ChoosePin(const SerialDevice& device, const std::vector<PortLink>& links) {
  std::array<bool, kHighestPort + 1> taken{};
  for (const PortLink& link : links) {
    taken[static_cast<std::size_t>(link.number)] = true;
  }
  const std::optional<int> customary = CustomaryNumber(device.node);
  if (customary && !taken[static_cast<std::size_t>(*customary)]) {
    return PinChoice{*customary, false};
  }
  const auto free = std::find(taken.begin() + kLowestPort, taken.end(), false);
  if (free != taken.end()) {
    return PinChoice{static_cast<int>(free - taken.begin()), false};
  }
  const PortLink* oldest = nullptr;
  const auto age = [](const PortLink& link) {
    return std::tuple(link.lastSeen.tv_sec, link.lastSeen.tv_nsec, link.number);
  };
  for (const PortLink& link : links) {
    if (link.isLink && !link.present && (oldest == nullptr || age(link) < age(*oldest))) {
      oldest = &link;
    }
  }
  return oldest != nullptr ? std::optional(PinChoice{oldest->number, true}) : std::nullopt;
}

std::optional<std::vector<PortLink>> PinNewDevices(const PortFolder& folder,
                                                   const std::vector<SerialDevice>& devices,
                                                   std::vector<FolderEntry>& restsOn,
                                                   std::error_code& problem) {
  // Built-in lines first: nothing that is new at the same time is to take their customary numbers.
  std::vector<const SerialDevice*> order;
  order.reserve(devices.size());
  for (const SerialDevice& device : devices) {
    order.push_back(&device);
  }
  std::stable_partition(order.begin(), order.end(),
                        [](const SerialDevice* device) { return CustomaryNumber(device->node).has_value(); });
  std::optional<std::vector<PortLink>> links = folder.Read(restsOn, problem);
  const bool someNew = links && std::any_of(order.begin(), order.end(), [&](const SerialDevice* device) {
                         return !IsPinned(*device, *links) && PinPathOf(*device);
                       });
  // Two processes that see one new device must not both give it a number.
  const FileDescriptor lock = someNew ? folder.Lock() : FileDescriptor();
  if (lock.IsValid()) {
    links = folder.Read(restsOn, problem);
  }
  for (const SerialDevice* device : order) {
    for (int attempt = 0; links && attempt < kAttempts && !IsPinned(*device, *links); ++attempt) {
      const std::optional<std::string> path = PinPathOf(*device);
      const std::optional<PinChoice> choice = ChoosePin(*device, *links);
      if (!path || !choice) {
        break;
      }
      const auto result = choice->replaces ? folder.Replace(choice->number, *path, problem)
                                           : folder.Pin(choice->number, *path, problem);
      if (result == PortFolder::PinResult::Failed) {
        break;
      }
      // Also after a success: a person may have made or replaced links meanwhile.
      links = folder.Read(restsOn, problem);
    }
  }
  return links;
}

}  // namespace quarn
