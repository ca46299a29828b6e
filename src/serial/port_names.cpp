#include "serial/port_names.h"

#include <algorithm>

#include "settings/setting_values.h"

namespace quarn {

QString PortNumberOf(const QString& portName) {
  if (portName.size() == 4 || portName.size() == 5) {
    return portName.mid(3);
  }
  return {};
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
