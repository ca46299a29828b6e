#pragma once

#include <sys/stat.h>

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarn {

/// Where the system's own trees stand. Other places are for tests only.
struct SystemRoots {
  std::string sys = "/sys";
  std::string proc = "/proc";
  std::string lockFiles = "/run/lock";
  std::string dev = "/dev";
  std::string udev = "/run/udev";
};

/// One name in one folder.
struct FolderEntry {
  std::string folder;
  std::string name;
  auto operator<=>(const FolderEntry&) const = default;
};

/// What a path leads to once every symbolic link in it has been followed.
struct ResolvedPath {
  /// The path without links; empty when there is nothing at its end (a missing part, a link loop).
  std::string node;
  /// Of the node; meaningless when `node` is empty.
  struct stat status {};
  /// The entries on which the outcome rests: each link on the way, and the last name, there or not.
  std::vector<FolderEntry> restsOn;
};

/// The text of a link; nothing, with errno set, for anything else (EINVAL: it is there, but no link).
std::optional<std::string> ReadLink(const std::string& path);

/// Follows `path` from `folder`, an absolute path without links (an absolute `path` starts at the root).
/// Links are read, never opened: opening a serial device switches its modem lines.
ResolvedPath ResolvePath(const std::string& folder, std::string_view path);

/// Whether a file is a terminal device and thus can be a port: a pseudo-terminal's slave or a character
/// device of the kernel's tty subsystem. The multiplexer /dev/ptmx is none: each open of it makes a
/// new pseudo-terminal.
bool IsTerminalDevice(const struct stat& status, const std::string& sysRoot);

/// Whether a device number is that of a pseudo-terminal's slave.
bool IsPseudoTerminal(dev_t number);

}  // namespace quarn
