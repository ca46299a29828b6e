#pragma once

#include <optional>
#include <system_error>
#include <vector>

#include "serial/device_list_linux.h"
#include "serial/port_folder_linux.h"

namespace quarn {

/// Which number a device without one gets.
struct PinChoice {
  int number = 0;
  /// All numbers are taken: the link there, whose device has been absent longest, gives way.
  bool replaces = false;
};

/// The lowest free number; for ttySn the number n + 1, when that is free. With all 99 taken, the link that
/// was seen last the longest ago among those whose device is absent. Nothing when all 99 devices
/// are present.
std::optional<PinChoice> ChoosePin(const SerialDevice& device, const std::vector<PortLink>& links);

/// Gives every device that no link lists a number of its own, and returns the links as they then are, judged
/// (JudgePins). A device whose link has come to lead elsewhere gets that link back. What is known of the
/// devices is kept in the folder. Nothing when the folder cannot be read. A device that the folder takes no
/// link for (it may be read-only, or all numbers in use) is left without. `problem` says why the folder could
/// not be read or takes no link.
std::optional<std::vector<PortLink>> PinNewDevices(const PortFolder& folder,
                                                   const std::vector<SerialDevice>& devices,
                                                   const SystemRoots& roots,
                                                   std::vector<FolderEntry>& restsOn,
                                                   std::error_code& problem);

/// The links as they are, judged; nothing is made or written. Nothing, with `problem`, when the folder cannot
/// be read.
std::optional<std::vector<PortLink>> ReadPins(const PortFolder& folder,
                                              const std::vector<SerialDevice>& devices,
                                              const SystemRoots& roots, std::error_code& problem);

}  // namespace quarn
