#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quarn {

/// Identifies a device among others of its type. A text is empty if it is unknown or does not exist.
struct DeviceIdentity {
  std::string name;    ///< in /dev/serial/by-id; the same for two devices with one serial number
  std::string path;    ///< its socket: from /dev/serial/by-path, or from sysfs without udev
  std::string vendor;  ///< vendor ID on the bus, "0403"
  std::string model;   ///< product ID of the vendor, "6001"
  std::string serial;

  [[nodiscard]] bool IsKnown() const { return !path.empty() || !vendor.empty(); }
  bool operator==(const DeviceIdentity&) const = default;
};

/// The description of a device when a link was made for it.
struct PinRecord {
  int number = 0;      ///< of the link, COM1 to COM99
  ino_t inode = 0;     ///< of the link: does not change when the user renames it
  std::string target;  ///< the link's text
  DeviceIdentity device;
  bool operator==(const PinRecord&) const = default;
};

/// The name of the file with the records in the ports folder.
inline constexpr const char* kPinRecordsFile = "devices";
/// The maximum number of bytes read from it; 99 records of the longest names need much less.
inline constexpr std::size_t kPinRecordsLimit = 262'144;

/// The records as text, one per line: number, inode, and the texts, separated by tabs. Control characters and
/// backslashes within a text are written \xHH.
std::string FormatPinRecords(const std::vector<PinRecord>& records);

/// Reads records from text. Ignores invalid lines and everything beyond the limit.
std::vector<PinRecord> ParsePinRecords(std::string_view text);

/// The records of a ports folder; empty if it has no such file. Returns nullopt with the reason in `problem`
/// if the file cannot be read.
std::optional<std::vector<PinRecord>> ReadPinRecords(const std::string& folder, std::error_code& problem);

/// Replaces the file in one step: after a crash it is the old one or the new one. If it fails, returns false
/// with the reason in `problem` and keeps the old file.
bool WritePinRecords(const std::string& folder, const std::vector<PinRecord>& records,
                     std::error_code& problem);

}  // namespace quarn
