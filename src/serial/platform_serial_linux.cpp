#include <QDir>

#include "serial/platform_serial.h"
#include "serial/port_source_linux.h"
#include "serial/serial_line_linux.h"

namespace quarn {

std::unique_ptr<SerialLineOpener> CreateLineOpener(const QString& portsFolder) {
  return std::make_unique<LinuxLineOpener>(portsFolder);
}

std::unique_ptr<PortSource> CreatePortSource(const QString& portsFolder) {
  return std::make_unique<LinuxPortSource>(portsFolder);
}

QString HowToChangePortNumber(const QString& portsFolder) {
  return QStringLiteral("A port has the name of its link in %1, which can be renamed.")
      .arg(QDir::toNativeSeparators(portsFolder));
}

}  // namespace quarn
