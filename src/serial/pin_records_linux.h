#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quarn {

/// What tells a device from others of its type. Each text may be empty: not known, or there is none.
struct DeviceIdentity {
  std::string name;    ///< in /dev/serial/by-id; two devices with one serial number have the same
  std::string path;    ///< the socket that it is plugged into: in /dev/serial/by-path, without udev in sysfs
  std::string vendor;  ///< as the bus numbers makers, "0403"
  std::string model;   ///< as the maker numbers its products, "6001"
  std::string serial;

  [[nodiscard]] bool IsKnown() const { return !path.empty() || !vendor.empty(); }
  bool operator==(const DeviceIdentity&) const = default;
};

/// What was known of a device when a link was made for it.
struct PinRecord {
  int number = 0;      ///< of the link, COM1 to COM99
  ino_t inode = 0;     ///< of the link: it stays when a person renames it
  std::string target;  ///< the link's text
  DeviceIdentity device;
  bool operator==(const PinRecord&) const = default;
};

/// The name of the file with the records in the ports folder.
inline constexpr const char* kPinRecordsFile = "devices";
/// No more bytes of it are read; 99 records of the longest names take a fraction.
inline constexpr std::size_t kPinRecordsLimit = 262'144;

/// The records as text, one a line: number, inode, and the texts, separated by tabs. Control characters and
/// backslashes within a text are written \xHH.
std::string FormatPinRecords(const std::vector<PinRecord>& records);

/// The records in a text. A line that is none is passed over, and so is all that comes behind the limit.
std::vector<PinRecord> ParsePinRecords(std::string_view text);

/// The records of a ports folder; none when it has no such file. Nothing, and why in `problem`, when there is
/// one that cannot be read.
std::optional<std::vector<PinRecord>> ReadPinRecords(const std::string& folder, std::error_code& problem);

/// Replaces the file in one step: after a crash it is the old one or the new one. False, and why in
/// `problem`, when that fails; the old one is left then.
bool WritePinRecords(const std::string& folder, const std::vector<PinRecord>& records,
                     std::error_code& problem);

}  // namespace quarn
