#include <QStringList>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "serial/friendly_name.h"
#include "serial/port_description_linux.h"
#include "serial/port_names.h"

// The friendly names of Windows and the descriptions of Linux: both contain texts of devices. The input is
// read as UTF-8, and as UTF-16 for units that UTF-8 cannot express.

namespace {

using quarn::Port;

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void CheckPortName(const QString& friendlyName) {
  const QString name = quarn::PortNameIn(friendlyName);
  Require(name.isEmpty() ||
          (name.startsWith(QLatin1String("COM")) && (name.size() == 4 || name.size() == 5)));
  Require(name.isEmpty() || friendlyName.contains(QLatin1Char('(') + name + QLatin1Char(')')));
  Require(quarn::DevicePathOf(friendlyName).endsWith(friendlyName));
}

/// The number by which a port is sorted: COM7 sorts like COM07.
QString NumberOf(const Port& port) { return port.name.mid(3).rightJustified(2, QLatin1Char('0')); }

/// Every friendly name with a port name gives one port, and the ports are in the order of the numbers.
void CheckPorts(const QString& text) {
  const QStringList lines = text.split(QLatin1Char('\n')).mid(0, quarn::kFriendlyNameCount);
  const QList<Port> ports = quarn::PortsNamed(lines);
  Require(std::ranges::is_sorted(ports, {}, NumberOf));
  QStringList expected;
  for (const QString& line : lines) {
    if (!quarn::PortNameIn(line).isEmpty()) expected.append(line);
  }
  QStringList used;
  for (const Port& port : ports) {
    Require(port.name == quarn::PortNameIn(port.description));
    used.append(port.description);
  }
  expected.sort();
  used.sort();
  Require(used == expected);
}

void CheckDescription(const QString& text) {
  const QStringList parts = text.split(QLatin1Char('\n'));
  const QString name = QStringLiteral("COM%1").arg(text.size() % 99 + 1);
  const QString description = quarn::DescriptionOf({parts.value(0), parts.value(1), parts.value(2), name});
  Require(description.endsWith(QStringLiteral(" (%1)").arg(name)));
  Require(description.count(QLatin1String("(COM")) == 1);
  Require(description.size() <= 250);
  Require(description.isValidUtf16());
}

void Check(const QString& text) {
  CheckPortName(text);
  CheckPorts(text);
  CheckDescription(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes(static_cast<const char*>(static_cast<const void*>(data)),
                         static_cast<qsizetype>(size));
  Check(QString::fromUtf8(bytes));
  QString units;
  for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) {
    units.append(QChar(static_cast<uchar>(bytes[i]), static_cast<uchar>(bytes[i + 1])));
  }
  Check(units);
  return 0;
}
