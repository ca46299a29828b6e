#include "serial/port_list.h"

#include <QStringList>

#include "serial/port_names.h"

namespace quarn {

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
    if (name.size() <= kFriendlyNameCapacity && name.contains(QLatin1String("COM"))) {
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
