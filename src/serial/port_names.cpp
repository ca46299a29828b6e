#include "serial/port_names.h"

#include <QStringList>
#include <algorithm>

#include "base/text_lines.h"
#include "settings/setting_values.h"

namespace quarn {

namespace {

constexpr int kScannedPositions = 250;
/// "07-" in front of "COM7".
constexpr int kSortKeyPrefix = 3;

QString SortKeyOf(const QString& shortName) {
  if (shortName.isEmpty()) {
    return {};
  }
  const QString number =
      shortName.size() == 4 ? QStringLiteral("0") + shortName.mid(3, 1) : shortName.mid(3, 2);
  return number + QLatin1Char('-') + shortName;
}

}  // namespace

QString ShortPortName(const QString& friendlyName) {
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

void SortPortNames(std::int32_t& count, PortNames& names) {
  count = std::clamp(count, 0, kPortCapacity);
  QStringList keys;
  keys.reserve(count);
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    keys.append(SortKeyOf(ShortPortName(names[i])));
  }
  SortTextList(keys, kPortCapacity);
  names.fill(QString());
  count = static_cast<std::int32_t>(keys.size());
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    names[i] = keys[static_cast<qsizetype>(i)].mid(kSortKeyPrefix);
  }
}

QString PortNumberOf(const QString& portName) {
  if (portName.size() == 4 || portName.size() == 5) {
    return portName.mid(3);
  }
  return {};
}

bool IsPortAvailable(const QString& name, std::int32_t count, const PortNames& names) {
  const auto end = names.begin() + std::clamp(count, 0, kPortCapacity);
  return std::find(names.begin(), end, name) != end;
}

bool IsBeyondLastPort(const QString& name) {
  constexpr int kLastPort = 99;
  const QString prefix = QStringLiteral("COM");
  const QString number = name.mid(prefix.size());
  return name.startsWith(prefix) && ToInteger(number) > kLastPort &&
         std::all_of(number.begin(), number.end(), [](QChar each) { return each >= u'0' && each <= u'9'; });
}

QString PortTitlePart(const QString& portName, bool open) {
  return open || portName == kNoPort ? portName : portName + QStringLiteral("-NC");
}

QString DevicePathOf(const QString& portName) {
  const int number = ToInteger(PortNumberOf(portName));
  return number > 9 ? QStringLiteral("\\\\.\\") + portName : portName;
}

}  // namespace quarn
