#include "serial/pin_judgement_linux.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace quarn {

namespace {

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
}

bool IsPluggedInto(const SerialDevice& device, const std::string& path) {
  return Contains(device.pathNames, path) || (!path.empty() && path == device.socket);
}

const SerialDevice* DeviceAt(const PortLink& link, const std::vector<SerialDevice>& devices) {
  const auto device = std::find_if(devices.begin(), devices.end(), [&](const SerialDevice& each) {
    return S_ISCHR(link.target.status.st_mode) && each.number == link.target.status.st_rdev;
  });
  return device != devices.end() ? &*device : nullptr;
}

bool ClaimOneName(const SerialDevice& a, const SerialDevice& b) {
  return std::any_of(a.idNames.begin(), a.idNames.end(),
                     [&](const std::string& name) { return Contains(b.idNames, name); });
}

/// Whether the link stands for a device other than `self` that claims one of the device's names.
bool IsRivals(const PortLink& link, const SerialDevice& device, const DeviceIdentity* self) {
  const bool claims =
      link.known && (Contains(device.idNames, link.known->name) || Contains(device.idNames, link.text));
  return claims && (self == nullptr || link.known->path != self->path);
}

/// `self`: the record of the device in question, which is not its own rival.
bool OwnsNames(const SerialDevice& device, const std::vector<SerialDevice>& devices,
               const std::vector<PortLink>& links, const DeviceIdentity* self) {
  return !device.identity.serial.empty() &&
         std::none_of(devices.begin(), devices.end(),
                      [&](const SerialDevice& other) {
                        return other.number != device.number && ClaimOneName(other, device);
                      }) &&
         std::none_of(links.begin(), links.end(),
                      [&](const PortLink& link) { return IsRivals(link, device, self); });
}

bool IsSameMake(const DeviceIdentity& known, const DeviceIdentity& now) {
  return known.vendor.empty() ||
         std::tie(known.vendor, known.model, known.serial) == std::tie(now.vendor, now.model, now.serial);
}

bool Holds(const PortLink& link, const SerialDevice& device, const std::vector<SerialDevice>& devices,
           const std::vector<PortLink>& links, const std::string& byId) {
  if (!IsSameMake(*link.known, device.identity)) {
    return false;
  }
  if (link.known->path.empty() || IsPluggedInto(device, link.known->path)) {
    return true;
  }
  // In another socket, only a unique name shows that it is the same device.
  return link.text.starts_with(byId) && OwnsNames(device, devices, links, &*link.known);
}

/// Whether a link without a record can only have been made for this device: every other device that claims
/// its name is present under another number, and had that number before. A number given since does not say
/// who had this one.
bool IsCertain(const PortLink& link, const SerialDevice& device, const std::vector<SerialDevice>& devices,
               const std::vector<PortLink>& links, const std::vector<PortLink>& before,
               const std::string& byId) {
  if (!link.text.starts_with(byId)) {
    return true;
  }
  std::vector<PortLink> old;
  for (std::size_t i = 0; i < links.size(); ++i) {
    if (!before[i].known) {
      old.push_back(links[i]);
    }
  }
  return std::none_of(before.begin(), before.end(),
                      [&](const PortLink& other) { return IsRivals(other, device, nullptr); }) &&
         std::all_of(devices.begin(), devices.end(), [&](const SerialDevice& other) {
           return other.number == device.number || !ClaimOneName(other, device) || IsListed(other, old);
         });
}

/// Which of several links to one device is listed: the one with the lowest rank.
auto RankOf(const PortLink& link, const std::string& byId) {
  return std::tuple(!link.known.has_value(), link.text.starts_with(byId), link.number);
}

}  // namespace

void AttachRecords(std::vector<PortLink>& links, const std::vector<PinRecord>& records) {
  std::vector<bool> used(records.size());
  const auto attach = [&](const auto& fits) {
    for (PortLink& link : links) {
      for (std::size_t i = 0; i < records.size() && link.isLink && !link.known; ++i) {
        if (!used[i] && records[i].target == link.text && fits(records[i], link)) {
          link.known = records[i].device;
          used[i] = true;
        }
      }
    }
  };
  attach([](const PinRecord& record, const PortLink& link) { return record.inode == link.inode; });
  attach([](const PinRecord& record, const PortLink& link) { return record.number == link.number; });
  attach([](const PinRecord&, const PortLink&) { return true; });
}

std::vector<PinRecord> RecordsOf(const std::vector<PortLink>& links) {
  std::vector<PinRecord> records;
  for (const PortLink& link : links) {
    if (link.known) {
      records.push_back({link.number, link.inode, link.text, *link.known});
    }
  }
  return records;
}

bool IsListed(const SerialDevice& device, const std::vector<PortLink>& links) {
  return std::any_of(links.begin(), links.end(), [&](const PortLink& link) {
    return link.present && S_ISCHR(link.target.status.st_mode) && link.target.status.st_rdev == device.number;
  });
}

bool OwnsItsNames(const SerialDevice& device, const std::vector<SerialDevice>& devices,
                  const std::vector<PortLink>& links) {
  return OwnsNames(device, devices, links, nullptr);
}

const PortLink* LinkMadeFor(const SerialDevice& device, const std::vector<PortLink>& links) {
  const auto link = std::find_if(links.begin(), links.end(), [&](const PortLink& each) {
    return each.known && !each.present && IsSameMake(*each.known, device.identity) &&
           IsPluggedInto(device, each.known->path);
  });
  return link != links.end() ? &*link : nullptr;
}

void JudgePins(std::vector<PortLink>& links, const std::vector<SerialDevice>& devices,
               const SystemRoots& roots) {
  const std::string lasting = roots.dev + "/serial/";
  const std::string byId = lasting + "by-id/";
  std::map<dev_t, PortLink*> chosen;
  const std::vector<PortLink> before = links;
  for (PortLink& link : links) {
    const SerialDevice* device = link.present ? DeviceAt(link, devices) : nullptr;
    const bool isPin = link.known || link.text.starts_with(lasting);
    if (!link.present || !isPin) {
      continue;
    }
    // A device that is not in the list has no record yet.
    link.present = device != nullptr && (!link.known || Holds(link, *device, devices, before, byId));
    if (!link.present) {
      continue;
    }
    PortLink*& best = chosen[device->number];
    PortLink* other = best;
    best = best == nullptr || RankOf(link, byId) < RankOf(*best, byId) ? &link : best;
    for (PortLink* each : {other, &link}) {
      if (each != nullptr && each != best) {
        each->present = false;
      }
    }
  }
  for (const auto& [number, link] : chosen) {
    const SerialDevice& device = *DeviceAt(*link, devices);
    if (!link->known && !IsCertain(*link, device, devices, links, before, byId)) {
      link->present = false;
    } else if (device.identity.IsKnown()) {
      link->known = device.identity;
    }
  }
}

}  // namespace quarn
