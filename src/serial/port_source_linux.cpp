#include "serial/port_source_linux.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <algorithm>
#include <utility>

#include "serial/port_description_linux.h"
#include "serial/port_details_linux.h"
#include "serial/port_pins_linux.h"
#include "serial/port_use_linux.h"

namespace quarn {

namespace {

Q_LOGGING_CATEGORY(lcSerial, "quarn.serial")

std::string AbsolutePath(const QString& path) {
  return QFile::encodeName(QDir::cleanPath(QDir(path).absolutePath())).toStdString();
}

QString TextOf(const std::string& bytes) { return QString::fromUtf8(bytes.data(), qsizetype(bytes.size())); }

QString UnavailableReason(const DeviceNode& node, pid_t user, const SystemRoots& roots) {
  const std::string permission = NoPermissionReason(node);
  if (!permission.empty()) {
    return TextOf(permission);
  }
  return TextOf(UseText(user, roots));
}

}  // namespace

LinuxPortSource::LinuxPortSource(const QString& portsFolder, SystemRoots roots, ChangeWatch::Mode mode)
    : m_folderPath(AbsolutePath(portsFolder)),
      m_roots(std::move(roots)),
      m_folder(m_folderPath, m_roots),
      m_watch(mode) {}

std::optional<QList<Port>> LinuxPortSource::Ports() {
  // Read even if the result is known to be stale, so that old events do not pile up.
  const bool changed = m_watch.Changed();
  if (std::exchange(m_changePending, false)) {
    for (const auto& notifier : m_notifiers) notifier->setEnabled(true);
  }
  // Anything not watched during the listing is listed again; the set can only grow.
  constexpr int kRounds = 3;
  const bool isDue = changed || m_awaitsNames || m_last == Listing::None;
  for (int round = 0; round < kRounds && (isDue || round > 0); ++round) {
    WatchPlan plan;
    m_last = List(plan);
    if (m_last == Listing::None || !m_watch.Follow(plan)) {
      break;
    }
  }
  if (m_last != Listing::Good) {
    return std::nullopt;
  }
  return m_ports;
}

std::optional<std::uint64_t> LinuxPortSource::Revision() {
  if (m_last == Listing::None || m_awaitsNames || !m_watch.TellsByItself()) {
    return std::nullopt;
  }
  if (m_notifiers.empty()) {
    Notify();
  }
  return m_listings + m_stirs;
}

void LinuxPortSource::Notify() {
  for (const int descriptor : m_watch.Descriptors()) {
    auto& notifier =
        m_notifiers.emplace_back(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read));
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] {
      // The descriptor stays readable until the watch is read; one notification is enough.
      for (const auto& each : m_notifiers) each->setEnabled(false);
      m_changePending = true;
      ++m_stirs;
    });
  }
}

LinuxPortSource::Listing LinuxPortSource::List(WatchPlan& plan) {
  ++m_listings;
  const std::optional<DeviceList> devices = ListSerialDevices(m_roots);
  if (!devices) {
    return Listing::None;
  }
  m_awaitsNames = devices->awaitsNames;
  for (const std::string& folder : devices->nameFolders) plan.folders[folder].anyName = true;
  std::vector<FolderEntry> dependencies = devices->pending;
  std::error_code problem;
  const std::optional<std::vector<PortLink>> links =
      PinNewDevices(m_folder, devices->devices, m_roots, dependencies, problem);
  Tell(problem);
  if (!links) {
    PlanWatch({}, dependencies, plan);
    return Listing::NoFolder;
  }
  StampLinks(*links);
  m_ports = PortsOf(*links, devices->devices);
  PlanWatch(*links, dependencies, plan);
  return Listing::Good;
}

/// Devices may change while the folder's problem stays; do not repeat the warning.
void LinuxPortSource::Tell(const std::error_code& problem) {
  if (problem && problem != m_told) {
    // Quoted, so that no control character of a folder's name gets to a terminal.
    qCWarning(lcSerial).nospace() << "the ports folder cannot be used: " << TextOf(m_folderPath) << ": "
                                  << problem.message().c_str();
  }
  m_told = problem;
}

/// A link that was present until now gets a new time stamp: it may have been present for months since the
/// last listing, and is absent only now.
void LinuxPortSource::StampLinks(const std::vector<PortLink>& links) {
  std::vector<int> present;
  for (const PortLink& link : links) {
    const bool before =
        std::find(m_presentBefore.begin(), m_presentBefore.end(), link.number) != m_presentBefore.end();
    if (link.isLink && (link.present || before)) {
      m_folder.StampSeen(link.number);
    }
    if (link.present) {
      present.push_back(link.number);
    }
  }
  m_presentBefore = std::move(present);
}

QList<Port> LinuxPortSource::PortsOf(const std::vector<PortLink>& links,
                                     const std::vector<SerialDevice>& devices) const {
  std::vector<DeviceNode> nodes;
  QStringList names;
  for (const PortLink& link : links) {
    if (link.present) {
      nodes.push_back({link.target.node, link.target.status});
      names.append(QStringLiteral("COM%1").arg(link.number));
    }
  }
  const std::vector<pid_t> users = UsersOf(nodes, m_roots);
  QList<Port> ports;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const QString& name = names[static_cast<qsizetype>(i)];
    ports.append({name, DescriptionOf({DeviceDescription(nodes[i].status, devices), TextOf(nodes[i].path),
                                       UnavailableReason(nodes[i], users[i], m_roots), name})});
  }
  return ports;
}

void LinuxPortSource::PlanWatch(const std::vector<PortLink>& links,
                                const std::vector<FolderEntry>& dependencies, WatchPlan& plan) const {
  // Devices appear here even if udev does not run.
  plan.folders[m_roots.dev].anyName = true;
  const ResolvedPath folder = ResolvePath({}, m_folderPath);
  const auto add = [&](const FolderEntry& entry) {
    // In the ports folder every entry already counts, by name only: the stamps on its links are not changes.
    if (entry.folder != folder.node) {
      plan.folders[entry.folder].names.insert(entry.name);
    }
  };
  std::for_each(dependencies.begin(), dependencies.end(), add);
  for (const PortLink& link : links) {
    std::for_each(link.target.dependencies.begin(), link.target.dependencies.end(), add);
    if (link.present) {
      plan.nodes.insert(link.target.node);
    }
  }
  if (!folder.node.empty() && S_ISDIR(folder.status.st_mode)) {
    plan.folders[folder.node].anyName = true;
  }
}

QString ResolvePort(const QString& portsFolder, const QString& name, const SystemRoots& roots) {
  if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
      name.contains(QLatin1Char('/')) || name.contains(QChar(u'\0'))) {
    return {};
  }
  const std::string folder = AbsolutePath(portsFolder);
  const std::string entry = QFile::encodeName(name).toStdString();
  const ResolvedPath end = ResolvePath({}, folder + '/' + entry);
  if (end.node.empty() || !IsTerminalDevice(end.status, roots.sys)) {
    return {};
  }
  QString node = QFile::decodeName(QByteArray::fromStdString(end.node));
  const std::optional<int> number = PortLinkNumber(entry);
  // A link can never stand for a pseudo-terminal as its device.
  if (!number || IsPseudoTerminal(end.status.st_rdev)) {
    return node;
  }
  // The list may be slightly old, and another device may have the name by now.
  const std::optional<DeviceList> devices = ListSerialDevices(roots);
  std::error_code problem;
  const auto links = devices ? ReadPins(PortFolder(folder, roots), devices->devices, roots, problem)
                             : std::optional<std::vector<PortLink>>();
  const bool isItself = links && std::any_of(links->begin(), links->end(), [&](const PortLink& link) {
                          return link.number == *number && link.present && link.target.node == end.node;
                        });
  return isItself ? node : QString();
}

}  // namespace quarn
