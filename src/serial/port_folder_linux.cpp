#include "serial/port_folder_linux.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>

#include "serial/folder_reader_linux.h"

namespace quarn {

namespace {

std::error_code SystemError(int error) { return {error, std::generic_category()}; }

/// Makes the folder and its parents. Another process may make them at the same time. Sets errno on failure.
bool MakeFolders(const std::string& path) {
  int error = ENOENT;
  for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string part = path.substr(0, slash);
    if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
      // A folder without write permission may exist already; the next level will show it.
      if (errno != EACCES && errno != EROFS && errno != EPERM) {
        return false;
      }
      error = errno;
    }
    if (slash == std::string::npos) {
      break;
    }
  }
  struct stat status {};
  const bool there = ::stat(path.c_str(), &status) == 0;
  if (there || errno == ENOENT) {
    errno = there ? ENOTDIR : error;
  }
  return there && S_ISDIR(status.st_mode);
}

}  // namespace

std::optional<int> PortLinkNumber(const std::string& name) {
  if (!name.starts_with("COM") || name.size() < 4 || name.size() > 5 || name[3] == '0') {
    return std::nullopt;
  }
  int number = 0;
  for (std::size_t i = 3; i < name.size(); ++i) {
    if (name[i] < '0' || name[i] > '9') {
      return std::nullopt;
    }
    number = number * 10 + (name[i] - '0');
  }
  return number;
}

PortFolder::PortFolder(std::string path, SystemRoots roots)
    : m_path(std::move(path)), m_roots(std::move(roots)) {
  while (m_path.size() > 1 && m_path.back() == '/') {
    m_path.pop_back();
  }
}

std::string PortFolder::PathOf(int number) const { return m_path + "/COM" + std::to_string(number); }

std::optional<std::vector<PortLink>> PortFolder::Read(std::vector<FolderEntry>& dependencies,
                                                      std::error_code& problem) const {
  const ResolvedPath place = ResolvePath({}, m_path);
  dependencies.insert(dependencies.end(), place.dependencies.begin(), place.dependencies.end());
  std::vector<PortLink> links;
  const OpenFolder folder(::opendir(m_path.c_str()));
  if (!folder) {
    if (errno == ENOENT) {
      return links;
    }
    problem = SystemError(errno);
    return std::nullopt;
  }
  errno = 0;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::optional<int> number = PortLinkNumber(entry->d_name);
    struct stat status {};
    if (number && ::fstatat(::dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
      PortLink link;
      link.number = *number;
      link.isLink = S_ISLNK(status.st_mode);
      link.lastSeen = status.st_mtim;
      link.inode = status.st_ino;
      links.push_back(std::move(link));
    }
    errno = 0;
  }
  if (errno != 0) {
    problem = SystemError(errno);
    return std::nullopt;
  }
  std::sort(links.begin(), links.end(),
            [](const PortLink& a, const PortLink& b) { return a.number < b.number; });
  for (PortLink& link : links) {
    if (link.isLink) {
      link.text = ReadLink(PathOf(link.number)).value_or(std::string());
      link.target = ResolvePath(place.node, "COM" + std::to_string(link.number));
      link.present = !link.target.node.empty() && IsTerminalDevice(link.target.status, m_roots.sys);
    }
  }
  return links;
}

PortFolder::PinResult PortFolder::Pin(int number, const std::string& target, std::error_code& problem) const {
  const std::string path = PathOf(number);
  if (::symlink(target.c_str(), path.c_str()) == 0) {
    return PinResult::Done;
  }
  if (errno == ENOENT && MakeFolders(m_path) && ::symlink(target.c_str(), path.c_str()) == 0) {
    return PinResult::Done;
  }
  if (errno == EEXIST) {
    return PinResult::NumberTaken;
  }
  problem = SystemError(errno);
  return PinResult::Failed;
}

FileDescriptor PortFolder::Lock() const {
  constexpr int kAttempts = 100;
  constexpr timespec kPause{0, 2'000'000};
  FileDescriptor lock(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock.IsValid() && errno == ENOENT && MakeFolders(m_path)) {
    lock = FileDescriptor(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  for (int attempt = 0; lock.IsValid() && attempt < kAttempts; ++attempt) {
    if (::flock(lock.Get(), LOCK_EX | LOCK_NB) == 0) {
      return lock;
    }
    ::nanosleep(&kPause, nullptr);
  }
  return FileDescriptor();
}

PortFolder::PinResult PortFolder::Replace(int number, const std::string& target,
                                          std::error_code& problem) const {
  const std::string path = PathOf(number);
  const std::string beside = m_path + "/.new-" + std::to_string(::getpid());
  // Left by a process with the same PID that ended between the two steps.
  ::unlink(beside.c_str());
  if (::symlink(target.c_str(), beside.c_str()) != 0) {
    problem = SystemError(errno);
    return PinResult::Failed;
  }
  if (::rename(beside.c_str(), path.c_str()) != 0) {
    problem = SystemError(errno);
    ::unlink(beside.c_str());
    return PinResult::Failed;
  }
  return PinResult::Done;
}

void PortFolder::StampSeen(int number) const {
  ::utimensat(AT_FDCWD, PathOf(number).c_str(), nullptr, AT_SYMLINK_NOFOLLOW);
}

}  // namespace quarn
