#pragma once

#include <optional>
#include <system_error>
#include <vector>

#include "serial/device_list_linux.h"
#include "serial/port_folder_linux.h"

namespace quarn {

/// The number for a device that has none.
struct PinChoice {
  int number = 0;
  /// All numbers are taken: replace the link with this number, whose device has been absent longest.
  bool replaces = false;
};

/// The lowest free number; for ttySn the number n + 1 if that is free. With all 99 taken, the link whose
/// device has been absent longest. Returns nullopt if all 99 devices are present.
std::optional<PinChoice> ChoosePin(const SerialDevice& device, const std::vector<PortLink>& links);

/// Gives a number to every device without a link, and returns the links afterwards, judged (JudgePins). A
/// device whose link now leads elsewhere gets that link back. The device records are saved in the folder. A
/// device stays without a number if the folder accepts no link (it may be read-only, or all numbers are in
/// use). Returns nullopt if the folder cannot be read. `problem` says why the folder cannot be read or
/// accepts no link.
std::optional<std::vector<PortLink>> PinNewDevices(const PortFolder& folder,
                                                   const std::vector<SerialDevice>& devices,
                                                   const SystemRoots& roots,
                                                   std::vector<FolderEntry>& dependencies,
                                                   std::error_code& problem);

/// The existing links, judged; writes nothing. Returns nullopt with `problem` if the folder cannot be read.
std::optional<std::vector<PortLink>> ReadPins(const PortFolder& folder,
                                              const std::vector<SerialDevice>& devices,
                                              const SystemRoots& roots, std::error_code& problem);

}  // namespace quarn
