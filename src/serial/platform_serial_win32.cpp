#include "serial/platform_serial.h"
#include "serial/port_source_win32.h"
#include "serial/serial_line_win32.h"

namespace quarn {

// The system keeps the COM numbers itself.

std::unique_ptr<SerialLineOpener> CreateLineOpener(const QString& /*portsFolder*/) {
  return std::make_unique<Win32LineOpener>();
}

std::unique_ptr<PortSource> CreatePortSource(const QString& /*portsFolder*/) {
  return std::make_unique<Win32PortSource>();
}

QString HowToChangePortNumber(const QString& /*portsFolder*/) {
  return QStringLiteral(
      "The Device Manager gives a port another one: Ports (COM & LPT), the adapter's properties, Port "
      "Settings, "
      "Advanced.");
}

}  // namespace quarn
