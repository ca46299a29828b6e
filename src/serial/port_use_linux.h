#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "serial/link_path_linux.h"

namespace quarn {

/// A device of which it is asked who uses it.
struct DeviceNode {
  std::string path;  ///< without links
  struct stat status {};
};

/// For each node the process that uses it, 0 when none is known: who holds a lock on it, whom a lock file
/// of the dial-out programs names (LCK..ttyUSB0, a decimal PID), or who has it open. This process
/// never counts. The far end of a pseudo-terminal does not count for having the near end open as well,
/// as it must to outlive a visitor.
///
/// Looks into what other processes let be seen; never opens the nodes.
std::vector<pid_t> UsersOf(const std::vector<DeviceNode>& nodes, const SystemRoots& roots);

/// "in use by minicom (PID 1234)"; without the program's name where that cannot be seen. Plain printable
/// ASCII, whatever the program calls itself.
std::string UseText(pid_t user, const SystemRoots& roots);

/// The name of a group; its number, in decimal digits, when the system knows no name.
std::string GroupName(gid_t group);

/// "no permission: group dialout" when the process may not read and write the node and membership of
/// that group would change it, "no permission" when it would not; empty when the node may be opened.
std::string PermissionHindrance(const DeviceNode& node);

}  // namespace quarn
