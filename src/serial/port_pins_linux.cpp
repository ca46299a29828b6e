#include "serial/port_pins_linux.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <utility>

#include "serial/pin_judgement_linux.h"

namespace quarn {

namespace {

/// How often another process may take the number before the device waits for the next listing.
constexpr int kAttempts = 100;

/// The usual number of a built-in line: ttyS0 is COM1.
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

bool LeadsTo(const std::string& path, const SerialDevice& device) {
  const ResolvedPath end = ResolvePath({}, path);
  return !end.node.empty() && S_ISCHR(end.status.st_mode) && end.status.st_rdev == device.number;
}

/// The most permanent path of the device that is its own and leads to it: a name in by-id, its socket, its
/// node.
std::optional<std::string> PinPathOf(const SerialDevice& device, bool ownsItsNames) {
  std::vector<std::string> paths = ownsItsNames ? device.idNames : std::vector<std::string>();
  paths.insert(paths.end(), device.pathNames.begin(), device.pathNames.end());
  paths.push_back(device.node);
  const auto path = std::find_if(paths.begin(), paths.end(),
                                 [&](const std::string& each) { return LeadsTo(each, device); });
  return path != paths.end() ? std::optional(*path) : std::nullopt;
}

/// Built-in lines first: other new devices must not take their usual numbers.
std::vector<const SerialDevice*> InOrderOfPinning(const std::vector<SerialDevice>& devices) {
  std::vector<const SerialDevice*> order;
  order.reserve(devices.size());
  for (const SerialDevice& device : devices) {
    order.push_back(&device);
  }
  std::stable_partition(order.begin(), order.end(),
                        [](const SerialDevice* device) { return CustomaryNumber(device->node).has_value(); });
  return order;
}

/// One pass of reading the folder and assigning numbers.
class Pinning {
 public:
  Pinning(const PortFolder& folder, const std::vector<SerialDevice>& devices, const SystemRoots& roots,
          std::vector<FolderEntry>& dependencies, std::error_code& problem)
      : m_folder(folder),
        m_devices(devices),
        m_roots(roots),
        m_dependencies(dependencies),
        m_problem(problem) {}

  /// False when the folder or the records cannot be read.
  bool Read() {
    m_links = m_folder.Read(m_dependencies, m_problem);
    std::optional<std::vector<PinRecord>> stored = m_links ? m_folder.Records(m_problem) : std::nullopt;
    if (!stored) {
      m_links.reset();
      return false;
    }
    m_stored = std::move(*stored);
    m_records = m_stored;
    Judge();
    return true;
  }
  /// Whether there is anything to be made or written.
  [[nodiscard]] bool IsUnfinished() const {
    return RecordsOf(*m_links) != m_stored ||
           std::any_of(m_devices.begin(), m_devices.end(), [&](const SerialDevice& device) {
             return !IsListed(device, *m_links) && PathOf(device);
           });
  }
  /// Tries until the device is listed, or until nothing more can be done.
  void Pin(const SerialDevice& device) {
    for (int attempt = 0; m_links && attempt < kAttempts && !IsListed(device, *m_links); ++attempt) {
      // Also after a success: the user may have changed links meanwhile.
      if (!MakeLink(device) || !Look()) {
        return;
      }
    }
  }
  void WriteRecords() {
    if (!m_links) return;
    const std::vector<PinRecord> records = RecordsOf(*m_links);
    if (records != m_stored && m_folder.Record(records, m_problem)) m_stored = records;
  }
  std::optional<std::vector<PortLink>> Links() { return std::move(m_links); }

 private:
  bool Look() {
    m_links = m_folder.Read(m_dependencies, m_problem);
    if (m_links) Judge();
    return m_links.has_value();
  }
  void Judge() {
    AttachRecords(*m_links, m_records);
    JudgePins(*m_links, m_devices, m_roots);
  }
  [[nodiscard]] std::optional<std::string> PathOf(const SerialDevice& device) const {
    return PinPathOf(device, OwnsItsNames(device, m_devices, *m_links));
  }
  bool MakeLink(const SerialDevice& device) {
    const std::optional<std::string> path = PathOf(device);
    const PortLink* own = LinkMadeFor(device, *m_links);
    const std::optional<PinChoice> choice =
        own != nullptr ? PinChoice{own->number, true} : ChoosePin(device, *m_links);
    if (!path || !choice || (own != nullptr && own->text == *path)) {
      return false;
    }
    const auto result = choice->replaces ? m_folder.Replace(choice->number, *path, m_problem)
                                         : m_folder.Pin(choice->number, *path, m_problem);
    if (result == PortFolder::PinResult::Done && device.identity.IsKnown()) {
      std::erase_if(m_records, [&](const PinRecord& each) { return each.number == choice->number; });
      m_records.push_back({choice->number, 0, *path, device.identity});
    }
    return result != PortFolder::PinResult::Failed;
  }

  const PortFolder& m_folder;
  const std::vector<SerialDevice>& m_devices;
  const SystemRoots& m_roots;
  std::vector<FolderEntry>& m_dependencies;
  std::error_code& m_problem;
  std::optional<std::vector<PortLink>> m_links;
  std::vector<PinRecord> m_stored;   ///< as in the file
  std::vector<PinRecord> m_records;  ///< including those of links made since
};

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
                                                   const SystemRoots& roots,
                                                   std::vector<FolderEntry>& dependencies,
                                                   std::error_code& problem) {
  Pinning pinning(folder, devices, roots, dependencies, problem);
  if (!pinning.Read()) {
    return std::nullopt;
  }
  if (!pinning.IsUnfinished()) {
    return pinning.Links();
  }
  // Two processes that see the same new device must not both assign a number.
  const FileDescriptor lock = folder.Lock();
  if (lock.IsValid() && !pinning.Read()) {
    return std::nullopt;
  }
  for (const SerialDevice* device : InOrderOfPinning(devices)) {
    pinning.Pin(*device);
  }
  // Without the lock another process is doing this; the records are then written after the next change.
  if (lock.IsValid()) {
    pinning.WriteRecords();
  }
  return pinning.Links();
}

std::optional<std::vector<PortLink>> ReadPins(const PortFolder& folder,
                                              const std::vector<SerialDevice>& devices,
                                              const SystemRoots& roots, std::error_code& problem) {
  std::vector<FolderEntry> dependencies;
  Pinning pinning(folder, devices, roots, dependencies, problem);
  return pinning.Read() ? pinning.Links() : std::nullopt;
}

}  // namespace quarn
