#pragma once

#include <string>
#include <vector>

#include "serial/device_list_linux.h"
#include "serial/port_folder_linux.h"

namespace quarn {

// Decides which device a link stands for. Pure: reads no files.
//
// A link through /dev/serial, or one made by the program, stands for one device permanently. The record of
// that device must match the device that the link leads to now; otherwise the port is not present. Any other
// link (to a node, to a pseudo-terminal) was made by the user and is not checked.

/// Attaches to each link the record of its device. A record follows the link's text, not its number, which
/// the user may change.
void AttachRecords(std::vector<PortLink>& links, const std::vector<PinRecord>& records);

/// The records of all links that have one, in the order of the links.
std::vector<PinRecord> RecordsOf(const std::vector<PortLink>& links);

/// Clears `present` for each link that leads to another device than its own, and for all but one of the links
/// to the same device. A link through /dev/serial without a record gets the record of the device it leads to.
/// If it is not certain that the link was made for this device, it is not present either. The record of a
/// device that was plugged in elsewhere is updated.
void JudgePins(std::vector<PortLink>& links, const std::vector<SerialDevice>& devices,
               const SystemRoots& roots);

/// Whether a present link leads to the device.
bool IsListed(const SerialDevice& device, const std::vector<PortLink>& links);

/// Whether the device's names in by-id belong to it alone: it has a serial number, and no other device,
/// present or recorded by a link, claims one of the names.
bool OwnsItsNames(const SerialDevice& device, const std::vector<SerialDevice>& devices,
                  const std::vector<PortLink>& links);

/// The absent link that was made for exactly this device in exactly this socket, or nullptr. Its name now
/// leads to another device, or nowhere.
const PortLink* LinkMadeFor(const SerialDevice& device, const std::vector<PortLink>& links);

}  // namespace quarn
