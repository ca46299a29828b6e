#pragma once

#include <QString>
#include <memory>

#include "serial/port_source.h"
#include "serial/serial_line.h"

namespace quarn {

/// This system's way to open lines and to find the ports present. `portsFolder` gives devices their COM
/// numbers where the system itself keeps none.
std::unique_ptr<SerialLineOpener> CreateLineOpener(const QString& portsFolder);
std::unique_ptr<PortSource> CreatePortSource(const QString& portsFolder);

/// How a person gives a port another number, as a sentence.
QString HowToChangePortNumber(const QString& portsFolder);

}  // namespace quarn
