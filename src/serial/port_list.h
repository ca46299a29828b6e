#pragma once

#include "serial/port_connection.h"
#include "serial/port_source.h"

namespace quarn {

/// Replaces the port record's list by the names of the ports present. If the device list cannot be obtained,
/// returns false and keeps the previous list.
bool RefreshPortList(PortSource& source, PortConnection& connection);

}  // namespace quarn
