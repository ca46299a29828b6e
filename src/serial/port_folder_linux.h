#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "serial/file_descriptor.h"
#include "serial/link_path_linux.h"
#include "serial/pin_records_linux.h"

namespace quarn {

inline constexpr int kLowestPort = 1;
inline constexpr int kHighestPort = 99;

/// One entry COM1 to COM99 of the ports folder.
struct PortLink {
  int number = 0;
  /// Anything but a symbolic link takes up its number and is never a port.
  bool isLink = false;
  /// When its device was last seen: the link's own time stamp.
  timespec lastSeen{};
  ino_t inode = 0;
  std::string text;  ///< what it says, as it stands there
  ResolvedPath target;
  /// What is known of the device that it stands for; nothing for a link that is taken as it is.
  std::optional<DeviceIdentity> known = {};
  /// Whether a terminal device stands at its end, and, once judged, whether it is the right one.
  bool present = false;
};

/// The folder with the COM numbers: one symbolic link COM1 ... COM99 per known device, made by the program
/// or by a person. Other names in it (COM0, COM01, COM100, com1) mean nothing.
///
/// Several processes may use one folder at the same time.
class PortFolder {
 public:
  /// `path` is absolute. Nothing has to be there yet.
  explicit PortFolder(std::string path, SystemRoots roots = {});

  /// The entries in ascending number order; none when there is no folder. `restsOn` receives what leads to
  /// the folder. Nothing, and why in `problem`, when there is something at the path that cannot be read
  /// as a folder.
  std::optional<std::vector<PortLink>> Read(std::vector<FolderEntry>& restsOn,
                                            std::error_code& problem) const;

  enum class PinResult { Done, NumberTaken, Failed };
  /// Makes the link; makes the folder first (and the ones above it, mode 0700) when it is missing. Never
  /// overwrites what is there. `problem` says why it failed.
  PinResult Pin(int number, const std::string& target, std::error_code& problem) const;

  /// Makes the link in place of the one that is there, in one step.
  PinResult Replace(int number, const std::string& target, std::error_code& problem) const;

  /// What is known of the devices behind the links; see ReadPinRecords and WritePinRecords.
  std::optional<std::vector<PinRecord>> Records(std::error_code& problem) const {
    return ReadPinRecords(m_path, problem);
  }
  bool Record(const std::vector<PinRecord>& records, std::error_code& problem) const {
    return WritePinRecords(m_path, records, problem);
  }

  /// Makes the folder when it is missing and keeps other processes from pinning for as long as the
  /// descriptor lives. One that holds the folder for long is not waited for: the descriptor is none then,
  /// as it is where the folder cannot be made.
  [[nodiscard]] FileDescriptor Lock() const;

  /// Notes in the link's time stamp that its device is there now. Failures do no harm.
  void StampSeen(int number) const;

 private:
  [[nodiscard]] std::string PathOf(int number) const;

  std::string m_path;
  SystemRoots m_roots;
};

/// The number of a name COM1 ... COM99, written without a leading zero; nothing for any other text.
std::optional<int> PortLinkNumber(const std::string& name);

}  // namespace quarn
