#include "demo/demo_ports.h"

#include "demo/demo_line.h"
#include "device/rules.h"

namespace quarn {

OpenResult DemoLineOpener::Open(const QString& devicePath) {
  const QString port = QLatin1String(kDemoPort);
  if (devicePath != port) {
    return {nullptr, {LineError::NotFound, devicePath + QStringLiteral(" is not present")}};
  }
  auto line = std::make_shared<DemoLine>(device::BuiltInRules());
  return {std::move(line), {}};
}

std::optional<QList<Port>> DemoPortSource::Ports() {
  const QString port = QLatin1String(kDemoPort);
  return QList<Port>{{port, QStringLiteral("Simulated instrument (%1)").arg(port)}};
}

}  // namespace quarn
