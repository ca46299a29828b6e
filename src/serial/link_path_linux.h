#pragma once

#include <sys/stat.h>

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarn {

/// The roots of the system's file trees. Other values are only for tests.
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

/// The result of following every symbolic link in a path.
struct ResolvedPath {
  /// The path without links; empty if it leads nowhere (a missing part, a link loop).
  std::string node;
  /// Of the node; undefined if `node` is empty.
  struct stat status {};
  /// The entries on which the result depends: each link on the way, and the last name, whether it exists or
  /// not.
  std::vector<FolderEntry> dependencies;
};

/// The text of a link. Returns nullopt with errno set for anything else (EINVAL: it exists but is not a
/// link).
std::optional<std::string> ReadLink(const std::string& path);

/// Follows `path` from `folder`, an absolute path without links (an absolute `path` starts at the root).
/// Links are read, never opened: opening a serial device switches its modem lines.
ResolvedPath ResolvePath(const std::string& folder, std::string_view path);

/// Whether a file is a terminal device and can be a port: a pseudo-terminal's slave or a character device of
/// the kernel's tty subsystem. Excludes the multiplexer /dev/ptmx, because each open of it creates a new
/// pseudo-terminal.
bool IsTerminalDevice(const struct stat& status, const std::string& sysRoot);

/// Whether a device number is that of a pseudo-terminal's slave.
bool IsPseudoTerminal(dev_t number);

}  // namespace quarn
