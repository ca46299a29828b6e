#include "serial/port_use_linux.h"

#include <fcntl.h>
#include <grp.h>
#include <limits.h>
#include <signal.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string_view>

#include "serial/folder_reader_linux.h"

namespace quarn {

namespace {

using Pids = std::vector<pid_t>;

void Note(pid_t& user, pid_t pid) {
  if (user == 0 && pid > 0 && pid != ::getpid()) {
    user = pid;
  }
}

/// Lines such as "1: FLOCK  ADVISORY  WRITE 1234 00:06:95 0 EOF": the PID, then the device's
/// major and minor number in hexadecimal and the inode in decimal digits.
void FindLockHolders(const std::vector<DeviceNode>& nodes, const SystemRoots& roots, Pids& users) {
  std::ifstream locks(roots.proc + "/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, mode, access, file;
    pid_t pid = 0;
    // A waiting process has "->" before the kind, so its PID is not a number.
    if (!(words >> number >> kind >> mode >> access >> pid >> file)) {
      continue;
    }
    unsigned int major = 0;
    unsigned int minor = 0;
    unsigned long inode = 0;
    char colon = 0;
    std::istringstream place(file);
    if (!(place >> std::hex >> major >> colon >> minor >> colon >> std::dec >> inode)) {
      continue;
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (nodes[i].status.st_dev == makedev(major, minor) && nodes[i].status.st_ino == inode) {
        Note(users[i], pid);
      }
    }
  }
}

/// "/dev/ttyUSB0" is locked as LCK..ttyUSB0, "/dev/pts/5" as LCK..pts_5.
void FindLockFiles(const std::vector<DeviceNode>& nodes, const SystemRoots& roots, Pids& users) {
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    std::string name = nodes[i].path;
    if (name.starts_with(roots.dev + '/')) {
      name.erase(0, roots.dev.size() + 1);
    }
    std::replace(name.begin(), name.end(), '/', '_');
    std::ifstream file(roots.lockFiles + "/LCK.." + name);
    pid_t pid = 0;
    // A lock file whose process has ended is stale, and all programs ignore it.
    if (file >> pid && pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM)) {
      Note(users[i], pid);
    }
  }
}

/// The files that one process has open, as far as visible.
void FindOpenFiles(const std::string& descriptors, pid_t pid,
                   const std::map<std::string, std::size_t, std::less<>>& wanted,
                   const std::vector<DeviceNode>& nodes, Pids& users) {
  const OpenFolder folder(::opendir(descriptors.c_str()));
  if (!folder) {
    return;
  }
  bool holdsFarEnd = false;
  std::vector<std::size_t> open;
  std::array<char, PATH_MAX> text{};
  while (const dirent* entry = ::readdir(folder.get())) {
    const ssize_t length = ::readlinkat(::dirfd(folder.get()), entry->d_name, text.data(), text.size());
    const std::string_view path(text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    holdsFarEnd = holdsFarEnd || path.ends_with("/ptmx");
    if (const auto found = wanted.find(path); found != wanted.end()) {
      open.push_back(found->second);
    }
  }
  for (const std::size_t i : open) {
    if (!holdsFarEnd || !IsPseudoTerminal(nodes[i].status.st_rdev)) {
      Note(users[i], pid);
    }
  }
}

}  // namespace

std::vector<pid_t> UsersOf(const std::vector<DeviceNode>& nodes, const SystemRoots& roots) {
  Pids users(nodes.size(), 0);
  if (nodes.empty()) {
    return users;
  }
  FindLockHolders(nodes, roots, users);
  FindLockFiles(nodes, roots, users);
  std::map<std::string, std::size_t, std::less<>> wanted;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (users[i] == 0) {
      wanted.emplace(nodes[i].path, i);
    }
  }
  const OpenFolder processes(::opendir(roots.proc.c_str()));
  while (const dirent* entry = processes && !wanted.empty() ? ::readdir(processes.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error == std::errc() && end == name.data() + name.size() && pid != ::getpid()) {
      FindOpenFiles(roots.proc + '/' + entry->d_name + "/fd", pid, wanted, nodes, users);
    }
  }
  return users;
}

std::string UserText(pid_t user, const SystemRoots& roots) {
  if (user == 0) return {};
  const std::string number = std::to_string(user);
  // The kernel keeps 15 characters of a name.
  std::array<char, 16> name{};
  std::ifstream file(roots.proc + '/' + number + "/comm");
  file.getline(name.data(), name.size());
  for (char& c : name) {
    if (c != '\0' && (c < ' ' || c > '~')) {
      c = '?';
    }
  }
  return name[0] != '\0' ? std::string(name.data()) + " (PID " + number + ')' : "PID " + number;
}

std::string UseText(pid_t user, const SystemRoots& roots) {
  return user != 0 ? "in use by " + UserText(user, roots) : std::string();
}

std::string GroupName(gid_t group) {
  // The buffer also receives the group's members; a directory service may have thousands.
  constexpr std::size_t kFirstSize = 4096;
  constexpr std::size_t kLargestSize = std::size_t{16} << 20U;
  struct group entry {};
  struct group* found = nullptr;
  for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 2) {
    std::vector<char> buffer(size);
    const int error = ::getgrgid_r(group, &entry, buffer.data(), buffer.size(), &found);
    if (error == 0 && found != nullptr) return found->gr_name;
    if (error != ERANGE) break;
  }
  return std::to_string(group);
}

std::string NoPermissionReason(const DeviceNode& node) {
  if (::faccessat(AT_FDCWD, node.path.c_str(), R_OK | W_OK, AT_EACCESS) == 0 || errno != EACCES) {
    return {};
  }
  constexpr mode_t kGroupMayUse = S_IRGRP | S_IWGRP;
  if ((node.status.st_mode & kGroupMayUse) != kGroupMayUse) {
    return "no permission";
  }
  return "no permission: group " + GroupName(node.status.st_gid);
}

}  // namespace quarn
