#include "serial/port_list.h"

#include <QStringList>
#include <algorithm>

#include "serial/port_names.h"

namespace quarn {

namespace {

bool IsListed(const QString& name) {
  return name.size() <= kFriendlyNameCapacity && name.contains(QLatin1String("COM"));
}

}  // namespace

bool CountPorts(PortSource& source, std::int32_t& count) {
  QStringList names;
  if (!source.FriendlyNames(names)) return false;
  const auto listed = std::count_if(names.cbegin(), names.cend(), IsListed);
  count = static_cast<std::int32_t>(std::min<qsizetype>(listed, kPortCapacity));
  return true;
}

bool EnumeratePorts(PortSource& source, FriendlyNameTable& friendlyNames, std::int32_t& count) {
  QStringList names;
  if (!source.FriendlyNames(names)) {
    return false;
  }
  friendlyNames.fill(QString());
  std::size_t kept = 0;
  for (const QString& name : names) {
    if (kept == friendlyNames.size()) {
      break;
    }
    if (IsListed(name)) {
      friendlyNames[kept++] = name;
    }
  }
  count = static_cast<std::int32_t>(kept);
  return true;
}

bool RefreshPortList(PortSource& source, PortConnection& connection) {
  FriendlyNameTable names;
  std::int32_t count = 0;
  if (!EnumeratePorts(source, names, count)) {
    return false;
  }
  SortPortNames(count, names);
  connection.portNames = std::move(names);
  connection.portCount = count;
  return true;
}

}  // namespace quarn
