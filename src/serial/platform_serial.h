#pragma once

#include <QString>
#include <chrono>
#include <memory>
#include <optional>

#include "serial/port_source.h"
#include "serial/serial_line.h"

namespace quarn {

/// This system's way to open lines and to list the ports. `portsFolder` assigns COM numbers to devices, if
/// the system has none itself.
std::unique_ptr<SerialLineOpener> CreateLineOpener(const QString& portsFolder);
std::unique_ptr<PortSource> CreatePortSource(const QString& portsFolder);

/// The device of a port, by its name ("COM4") or by its own path, without a list of the ports. Empty if there
/// is none, or none that can be a port.
QString FindPortDevice(const QString& portsFolder, const QString& port);
/// Opens a device that FindPortDevice has found.
OpenResult OpenPortDevice(const QString& device);

/// How long the port's adapter may keep received bytes before it hands them over, if its driver says so and
/// does not let a program change it.
std::optional<std::chrono::milliseconds> LatencyTimerOf(const QString& port);

/// Tells the user, in one sentence, how to change a port's number.
QString HowToChangePortNumber(const QString& portsFolder);

}  // namespace quarn
