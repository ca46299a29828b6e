#pragma once

#include <QString>
#include <array>
#include <cstdint>

#include "serial/port_connection.h"
#include "serial/port_source.h"

namespace quarn {

/// The friendly names of the ports present, in the order in which the system reports them.
using FriendlyNameTable = std::array<QString, kPortCapacity>;

/// Fills the table and counts its entries; the rest of the table is empty. Ignores names without "COM" or too
/// long for the system's buffer, and everything after the hundredth. If the device list cannot be obtained,
/// returns false and changes nothing.
bool EnumeratePorts(PortSource& source, FriendlyNameTable& friendlyNames, std::int32_t& count);

/// How many ports RefreshPortList would list now, for callers that poll. Does not count names without a short
/// name, which EnumeratePorts keeps. If the device list cannot be obtained, returns false and changes
/// nothing.
bool CountPorts(PortSource& source, std::int32_t& count);

/// Rebuilds the port record's list: short names in ascending number order. If the device list cannot be
/// obtained, returns false and keeps the previous list.
bool RefreshPortList(PortSource& source, PortConnection& connection);

}  // namespace quarn
