#pragma once

#include <QString>
#include <array>
#include <cstdint>

#include "serial/port_connection.h"
#include "serial/port_source.h"

namespace quarn {

/// The friendly names of the ports present, in the order in which the system reports them.
using FriendlyNameTable = std::array<QString, kPortCapacity>;

/// Fills the table and counts its entries; the rest of the table is empty. A name that does not hold
/// "COM", or that is too long for the system's buffer, is passed over, and so is everything after the
/// hundredth. False, and nothing touched, when the device list cannot be obtained.
bool EnumeratePorts(PortSource& source, FriendlyNameTable& friendlyNames, std::int32_t& count);

/// How many ports RefreshPortList would list now, for who asks often: names without a short name, which
/// EnumeratePorts keeps, are not among them. False, and nothing touched, when the device list cannot be
/// obtained.
bool CountPorts(PortSource& source, std::int32_t& count);

/// Rebuilds the port record's list: short names in ascending number order. False, and the previous list
/// stays, when the device list cannot be obtained.
bool RefreshPortList(PortSource& source, PortConnection& connection);

}  // namespace quarn
