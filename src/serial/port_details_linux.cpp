#include "serial/port_details_linux.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <filesystem>

#include "serial/port_folder_linux.h"
#include "serial/port_pins_linux.h"
#include "serial/port_use_linux.h"

namespace quarn {
namespace {

QString TextFrom(const std::string& bytes) {
  return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

}  // namespace

QString DeviceDescription(const struct stat& node, const std::vector<SerialDevice>& devices) {
  if (IsPseudoTerminal(node.st_rdev)) return QStringLiteral("Pseudo-terminal");
  const auto device = std::find_if(devices.begin(), devices.end(),
                                   [&](const SerialDevice& each) { return each.number == node.st_rdev; });
  const QString product = device != devices.end() ? TextFrom(device->product) : QString();
  return product.trimmed().isEmpty() ? QStringLiteral("Serial Port") : product;
}

std::string LastingNameOf(const std::string& node, const SystemRoots& roots) {
  for (const char* kind : {"/serial/by-id", "/serial/by-path"}) {
    std::vector<std::string> names;
    std::error_code ignored;
    // A loop over a range would throw if the folder cannot be read to its end.
    for (auto each = std::filesystem::directory_iterator(roots.dev + kind, ignored);
         each != std::filesystem::directory_iterator(); each.increment(ignored)) {
      const std::string name = each->path().string();
      if (ResolvePath({}, name).node == node) names.push_back(name);
    }
    if (!names.empty()) return *std::min_element(names.begin(), names.end());
  }
  return {};
}

std::optional<std::vector<PortDetails>> ListPortDetails(const QString& portsFolder,
                                                        const SystemRoots& roots) {
  const std::optional<DeviceList> devices = ListSerialDevices(roots);
  if (!devices) return std::nullopt;
  const PortFolder folder(QFile::encodeName(QDir::cleanPath(QDir(portsFolder).absolutePath())).toStdString(),
                          roots);
  std::vector<FolderEntry> dependencies;
  std::error_code problem;
  const auto links = PinNewDevices(folder, devices->devices, roots, dependencies, problem);
  if (!links) return std::nullopt;
  std::vector<DeviceNode> nodes;
  std::vector<PortDetails> ports;
  for (const PortLink& link : *links) {
    if (!link.present) continue;
    nodes.push_back({link.target.node, link.target.status});
    ports.push_back({.name = QStringLiteral("COM%1").arg(link.number),
                     .description = DeviceDescription(link.target.status, devices->devices),
                     .device = TextFrom(link.target.node),
                     .lastingName = TextFrom(LastingNameOf(link.target.node, roots)),
                     .unavailableReason = TextFrom(NoPermissionReason(nodes.back()))});
  }
  const std::vector<pid_t> users = UsersOf(nodes, roots);
  for (std::size_t i = 0; i < ports.size(); ++i) {
    ports[i].holder = TextFrom(UserText(users[i], roots));
    if (ports[i].unavailableReason.isEmpty() && users[i] != 0)
      ports[i].unavailableReason = QStringLiteral("in use");
  }
  return ports;
}

std::optional<std::vector<PortDetails>> ListPortDetails(const QString& portsFolder) {
  return ListPortDetails(portsFolder, SystemRoots());
}

}  // namespace quarn
