#pragma once

#include "serial/device_list_linux.h"
#include "serial/port_details.h"

namespace quarn {

/// What a device calls itself; never empty.
QString DeviceDescription(const struct stat& node, const std::vector<SerialDevice>& devices);

/// A path to the node below /dev/serial, by-id before by-path. Taken from the folders themselves, because
/// udev's data may not be there, for example in a container. Empty if there is none.
std::string LastingNameOf(const std::string& node, const SystemRoots& roots);

/// As ListPortDetails. The roots are for tests.
std::optional<std::vector<PortDetails>> ListPortDetails(const QString& portsFolder, const SystemRoots& roots);

}  // namespace quarn
