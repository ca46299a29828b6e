#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "serial/link_path_linux.h"

namespace quarn {

/// A device whose user is wanted.
struct DeviceNode {
  std::string path;  ///< without links
  struct stat status {};
};

/// For each node the process that uses it, or 0 if unknown: the one that holds a lock on it, or is named by a
/// lock file of the dial-out programs (LCK..ttyUSB0, a decimal PID), or has it open. This process never
/// counts. The program at the far end of a pseudo-terminal does not count for having the near end open too,
/// which it needs to survive a disconnect.
///
/// Uses only the visible data of other processes; never opens the nodes.
std::vector<pid_t> UsersOf(const std::vector<DeviceNode>& nodes, const SystemRoots& roots);

/// The program that uses a port: "minicom (PID 1234)", or "PID 1234" if its name is not visible. Printable
/// ASCII only, whatever the program's name contains. Empty for 0.
std::string UserText(pid_t user, const SystemRoots& roots);
/// The same behind "in use by ".
std::string UseText(pid_t user, const SystemRoots& roots);

/// The name of a group; its decimal number if the system knows no name.
std::string GroupName(gid_t group);

/// "no permission: group dialout" if the process may not read and write the node and membership of that group
/// would help; "no permission" if it would not; empty if the node may be opened.
std::string NoPermissionReason(const DeviceNode& node);

}  // namespace quarn
