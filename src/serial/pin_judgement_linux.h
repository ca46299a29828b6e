#pragma once

#include <string>
#include <vector>

#include "serial/device_list_linux.h"
#include "serial/port_folder_linux.h"

namespace quarn {

// Which device a link stands for. Pure: no file is looked at.
//
// A link through /dev/serial, or one that the program made, stands for one device for good. What was known of
// that device must hold for the one that the link leads to now, or the link is a port not present. Any other
// link (to a node, to a pseudo-terminal) is a person's own, and is taken as it is.

/// Gives each link what is known of its device. A record goes with its link's text, not with the number,
/// which a person may change.
void AttachRecords(std::vector<PortLink>& links, const std::vector<PinRecord>& records);

/// The records of links that have one, in the links' order.
std::vector<PinRecord> RecordsOf(const std::vector<PortLink>& links);

/// Takes `present` from each link that leads to another device than its own, and from all but one of those
/// that stand for the same device. A link through /dev/serial of which nothing is known gets what is known of
/// the device it leads to, unless it is not certain that this is the device it was made for; then it
/// is not present either. What is known of a device that was plugged in elsewhere follows it.
void JudgePins(std::vector<PortLink>& links, const std::vector<SerialDevice>& devices,
               const SystemRoots& roots);

/// Whether a present link leads to the device.
bool IsListed(const SerialDevice& device, const std::vector<PortLink>& links);

/// Whether the device's names in by-id are its own: it has a serial number, and no other device, present or
/// known by a link, has claimed one of the names.
bool OwnsItsNames(const SerialDevice& device, const std::vector<SerialDevice>& devices,
                  const std::vector<PortLink>& links);

/// The link, not present, that was made for just this device in just this socket; nullptr when there is none.
/// Its name leads to another device by now, or nowhere.
const PortLink* LinkMadeFor(const SerialDevice& device, const std::vector<PortLink>& links);

}  // namespace quarn
