#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "serial/port_source.h"

namespace quarn {

// Friendly names are what Windows calls its devices: "USB Serial Port (COM3)". Pure functions, any thread;
// only the Windows source uses them, but they are compiled and tested on all systems.

/// Only the first 100 friendly names that contain "COM" are used, whether or not they give a port.
inline constexpr int kFriendlyNameCount = 100;

/// The name ("COM3", "COM12") in the brackets of a friendly name, or an empty text. The first bracket with
/// one or two characters after COM counts, if it starts within the first 250 positions. These characters need
/// not be digits.
QString PortNameIn(const QString& friendlyName);

/// The ports with these friendly names, in ascending number order; ports with the same name keep their order.
/// The description of a port is its friendly name. A friendly name that contains no port name gives no port.
QList<Port> PortsNamed(const QStringList& friendlyNames);

}  // namespace quarn
