#include <QRegularExpression>

#include "serial/platform_serial.h"
#include "serial/port_names.h"
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

/// Whether there is such a port shows when it is opened. Nothing else is ever opened: a name can also be that
/// of a disk, and COM07 that of a file.
QString FindPortDevice(const QString& /*portsFolder*/, const QString& port) {
  static const QRegularExpression name(QStringLiteral("\\ACOM[1-9][0-9]{0,8}\\z"));
  return name.match(port).hasMatch() ? DevicePathOf(port) : QString();
}

OpenResult OpenPortDevice(const QString& device) { return Win32LineOpener().Open(device); }

QString HowToChangePortNumber(const QString& /*portsFolder*/) {
  return QStringLiteral(
      "The Device Manager gives a port another one: Ports (COM & LPT), the adapter's properties, Port "
      "Settings, "
      "Advanced.");
}

}  // namespace quarn
