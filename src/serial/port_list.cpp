#include "serial/port_list.h"

#include <QStringList>
#include <algorithm>

#include "serial/port_names.h"

namespace quarn {

namespace {

bool IsListed(const QString& name) {
  return name.size() <= kFriendlyNameCapacity && name.contains(QLatin1String("COM"));
}

/// The first hundred names that are listed.
QStringList ListedNames(const QStringList& names) {
  QStringList listed;
  for (const QString& name : names) {
    if (listed.size() == kPortCapacity) break;
    if (IsListed(name)) listed.append(name);
  }
  return listed;
}

}  // namespace

bool CountPorts(PortSource& source, std::int32_t& count) {
  QStringList names;
  if (!source.FriendlyNames(names)) return false;
  const QStringList listed = ListedNames(names);
  count = static_cast<std::int32_t>(std::count_if(
      listed.cbegin(), listed.cend(), [](const QString& name) { return !ShortPortName(name).isEmpty(); }));
  return true;
}

bool EnumeratePorts(PortSource& source, FriendlyNameTable& friendlyNames, std::int32_t& count) {
  QStringList names;
  if (!source.FriendlyNames(names)) {
    return false;
  }
  const QStringList listed = ListedNames(names);
  friendlyNames.fill(QString());
  std::copy(listed.cbegin(), listed.cend(), friendlyNames.begin());
  count = static_cast<std::int32_t>(listed.size());
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
