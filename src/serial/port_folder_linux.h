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
  /// Anything other than a symbolic link occupies its number and is never a port.
  bool isLink = false;
  /// When its device was last seen: the link's own time stamp.
  timespec lastSeen{};
  ino_t inode = 0;
  std::string text;  ///< the link's text, unchanged
  ResolvedPath target;
  /// The record of the device that it stands for; nullopt for a link that is not checked.
  std::optional<DeviceIdentity> known = {};
  /// Whether it leads to a terminal device and, after JudgePins, to the right one.
  bool present = false;
};

/// The folder with the COM numbers: one symbolic link COM1 ... COM99 per known device, made by the program or
/// by the user. Other names in it (COM0, COM01, COM100, com1) are ignored.
///
/// Several processes may use one folder at the same time.
class PortFolder {
 public:
  /// `path` is absolute and need not exist yet.
  explicit PortFolder(std::string path, SystemRoots roots = {});

  /// The entries in ascending number order; empty if there is no folder. `dependencies` receives the entries
  /// that lead to the folder. Returns nullopt with the reason in `problem` if the path exists but cannot be
  /// read as a folder.
  std::optional<std::vector<PortLink>> Read(std::vector<FolderEntry>& dependencies,
                                            std::error_code& problem) const;

  enum class PinResult { Done, NumberTaken, Failed };
  /// Makes the link, and first the folder (with its parents, mode 0700) if it is missing. Never overwrites
  /// anything. `problem` says why it failed.
  PinResult Pin(int number, const std::string& target, std::error_code& problem) const;

  /// Replaces the existing link in one step.
  PinResult Replace(int number, const std::string& target, std::error_code& problem) const;

  /// The records of the devices behind the links; see ReadPinRecords and WritePinRecords.
  std::optional<std::vector<PinRecord>> Records(std::error_code& problem) const {
    return ReadPinRecords(m_path, problem);
  }
  bool Record(const std::vector<PinRecord>& records, std::error_code& problem) const {
    return WritePinRecords(m_path, records, problem);
  }

  /// Makes the folder if it is missing, and prevents other processes from pinning while the descriptor
  /// exists. Returns no descriptor if another process holds the folder for long, or if the folder cannot be
  /// made.
  [[nodiscard]] FileDescriptor Lock() const;

  /// Records in the link's time stamp that its device is present now. Failures are harmless.
  void StampSeen(int number) const;

 private:
  [[nodiscard]] std::string PathOf(int number) const;

  std::string m_path;
  SystemRoots m_roots;
};

/// The number of a name COM1 ... COM99, written without a leading zero; nullopt for any other text.
std::optional<int> PortLinkNumber(const std::string& name);

}  // namespace quarn
