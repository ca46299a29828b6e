#include "serial/link_path_linux.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <deque>

namespace quarn {

namespace {

/// As many links as the kernel itself follows in one path.
constexpr int kMaxLinks = 40;

void PutInFront(std::deque<std::string>& parts, std::string_view path) {
  std::deque<std::string> added;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view part = path.substr(0, slash);
    if (!part.empty() && part != ".") {
      added.emplace_back(part);
    }
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
  }
  parts.insert(parts.begin(), added.begin(), added.end());
}

}  // namespace

std::optional<std::string> ReadLink(const std::string& path) {
  std::array<char, PATH_MAX> text{};
  const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
  if (length < 0) {
    return std::nullopt;
  }
  return std::string(text.data(), static_cast<std::size_t>(length));
}

ResolvedPath ResolvePath(const std::string& folder, std::string_view path) {
  ResolvedPath result;
  std::string reached = !path.empty() && path.front() == '/' ? std::string() : folder;
  std::deque<std::string> parts;
  PutInFront(parts, path);
  int links = 0;
  while (!parts.empty()) {
    const std::string part = parts.front();
    parts.pop_front();
    if (part == "..") {
      reached.erase(reached.empty() ? 0 : reached.rfind('/'));
      continue;
    }
    const std::string next = reached + '/' + part;
    const std::optional<std::string> target = ReadLink(next);
    const bool missing = !target && errno != EINVAL;
    if (target || missing || parts.empty()) {
      result.dependencies.push_back({reached.empty() ? "/" : reached, part});
    }
    if (missing || (target && ++links > kMaxLinks)) {
      return result;
    }
    if (!target) {
      reached = next;
      continue;
    }
    if (target->starts_with('/')) {
      reached.clear();
    }
    PutInFront(parts, *target);
  }
  if (::stat(reached.empty() ? "/" : reached.c_str(), &result.status) == 0) {
    result.node = reached.empty() ? "/" : reached;
  }
  return result;
}

bool IsPseudoTerminal(dev_t number) {
  // The kernel's UNIX98_PTY_SLAVE_MAJOR and the seven majors after it.
  return major(number) >= 136 && major(number) <= 143;
}

bool IsTerminalDevice(const struct stat& status, const std::string& sysRoot) {
  if (!S_ISCHR(status.st_mode) || status.st_rdev == makedev(5, 2)) {
    return false;
  }
  if (IsPseudoTerminal(status.st_rdev)) {
    return true;
  }
  const std::string number =
      std::to_string(major(status.st_rdev)) + ':' + std::to_string(minor(status.st_rdev));
  const std::optional<std::string> subsystem = ReadLink(sysRoot + "/dev/char/" + number + "/subsystem");
  return subsystem && (*subsystem == "tty" || subsystem->ends_with("/tty"));
}

}  // namespace quarn
