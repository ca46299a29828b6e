#include "serial/friendly_name.h"

#include <algorithm>

namespace quarn {

namespace {

constexpr int kScannedPositions = 250;

/// "07-COM7": COM9 is before COM10.
QString SortKeyOf(const Port& port) {
  const QString number = port.name.mid(3).rightJustified(2, QLatin1Char('0'));
  return number + QLatin1Char('-') + port.name;
}

}  // namespace

QString PortNameIn(const QString& friendlyName) {
  const qsizetype end = std::min<qsizetype>(friendlyName.size(), kScannedPositions);
  const auto closesAt = [&](qsizetype at) {
    return at < friendlyName.size() && friendlyName[at] == QLatin1Char(')');
  };
  for (qsizetype i = 0; i < end; ++i) {
    if (QStringView(friendlyName).mid(i, 4) != u"(COM") {
      continue;
    }
    if (closesAt(i + 5)) {
      return friendlyName.mid(i + 1, 4);
    }
    if (closesAt(i + 6)) {
      return friendlyName.mid(i + 1, 5);
    }
  }
  return {};
}

QList<Port> PortsNamed(const QStringList& friendlyNames) {
  QList<Port> ports;
  for (const QString& friendlyName : friendlyNames.filter(QStringLiteral("COM")).mid(0, kFriendlyNameCount)) {
    if (const QString name = PortNameIn(friendlyName); !name.isEmpty()) {
      ports.append({name, friendlyName});
    }
  }
  std::ranges::stable_sort(ports, {}, SortKeyOf);
  return ports;
}

}  // namespace quarn
