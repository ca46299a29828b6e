#include "serial/port_details.h"
#include "serial/port_source_win32.h"

namespace quarn {

/// The system tells neither who uses a port nor whether anybody does; opening it to see would switch its
/// modem lines.
std::optional<std::vector<PortDetails>> ListPortDetails(const QString& /*portsFolder*/) {
  const std::optional<QList<Port>> present = Win32PortSource().Ports();
  if (!present) return std::nullopt;
  std::vector<PortDetails> ports;
  for (const Port& each : *present) {
    QString description = each.description;
    description.remove(QStringLiteral(" (%1)").arg(each.name));
    ports.push_back({.name = each.name,
                     .description = description,
                     .device = QStringLiteral("\\\\.\\") + each.name,
                     .lastingName = {},
                     .unavailableReason = {},
                     .holder = {}});
  }
  return ports;
}

}  // namespace quarn
