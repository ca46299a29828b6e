#include <QStringList>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "serial/friendly_name.h"
#include "serial/port_names.h"
#include "serial/port_source.h"

// Friendly names come from devices and drivers. The input is read as UTF-8, and as UTF-16 for units that
// UTF-8 cannot express.

namespace {

using quarn::PortNames;

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void CheckShortName(const QString& friendlyName) {
  const QString name = quarn::ShortPortName(friendlyName);
  Require(name.isEmpty() ||
          (name.startsWith(QLatin1String("COM")) && (name.size() == 4 || name.size() == 5)));
  Require(name.isEmpty() || friendlyName.contains(QLatin1Char('(') + name + QLatin1Char(')')));
  Require(quarn::DevicePathOf(friendlyName).endsWith(friendlyName));
}

/// The number by which a name is sorted: COM7 sorts like COM07.
QString NumberOf(const QString& shortName) { return shortName.mid(3).rightJustified(2, QLatin1Char('0')); }

/// Sorting keeps every name with a port, as often as it occurs, in the order of the numbers.
void CheckSorting(const QString& text) {
  const QStringList lines = text.split(QLatin1Char('\n')).mid(0, quarn::kPortCapacity);
  PortNames names;
  std::ranges::copy(lines, names.begin());
  QStringList expected;
  for (const QString& line : lines) {
    if (const QString name = quarn::ShortPortName(line); !name.isEmpty()) expected.append(name);
  }
  auto count = static_cast<std::int32_t>(lines.size());
  quarn::SortPortNames(count, names);
  Require(count == expected.size());
  QStringList sorted(names.begin(), names.begin() + count);
  Require(std::ranges::is_sorted(sorted, {}, NumberOf));
  Require(
      std::all_of(names.begin() + count, names.end(), [](const QString& name) { return name.isEmpty(); }));
  expected.sort();
  sorted.sort();
  Require(sorted == expected);
}

void CheckComposing(const QString& text) {
  const QStringList parts = text.split(QLatin1Char('\n'));
  const QString portName = QStringLiteral("COM%1").arg(text.size() % 99 + 1);
  const QString name = quarn::ComposeFriendlyName({parts.value(0), parts.value(1), parts.value(2), portName});
  Require(quarn::ShortPortName(name) == portName);
  Require(name.size() <= quarn::kFriendlyNameCapacity);
  Require(name.isValidUtf16());
}

void Check(const QString& text) {
  CheckShortName(text);
  CheckSorting(text);
  CheckComposing(text);
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
