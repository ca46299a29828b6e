#include "device/pseudo_terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quarn::device {
namespace {

[[noreturn]] void Throw(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

bool MakeRaw(int fd) {
  termios state{};
  if (tcgetattr(fd, &state) != 0) return false;
  cfmakeraw(&state);
  return tcsetattr(fd, TCSANOW, &state) == 0;
}

void CloseQuietly(int& fd) {
  if (fd >= 0) ::close(std::exchange(fd, -1));
}

/// A user who has never started Quarn has no ports/ folder yet. The folder made here belongs to this user
/// alone.
void MakeFolderAbove(const std::string& path) {
  const mode_t before = ::umask(S_IRWXG | S_IRWXO);
  std::error_code failed;  // reported when the link is made
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), failed);
  ::umask(before);
}

}  // namespace

PseudoTerminal::PseudoTerminal() {
  m_far = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (m_far < 0) Throw("posix_openpt");
  std::array<char, 64> name{};
  if (grantpt(m_far) != 0 || unlockpt(m_far) != 0 || ptsname_r(m_far, name.data(), name.size()) != 0) {
    CloseQuietly(m_far);
    Throw("pseudo-terminal");
  }
  m_nodePath = name.data();
  m_near = ::open(m_nodePath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (m_near < 0 || !MakeRaw(m_near)) {
    HangUp();
    Throw(m_nodePath);
  }
}

PseudoTerminal::~PseudoTerminal() { HangUp(); }

void PseudoTerminal::HangUp() {
  CloseQuietly(m_near);
  CloseQuietly(m_far);
}

namespace {

/// A link of an instrument that has ended: it leads nowhere, or to a pseudo-terminal.
bool IsReplaceable(const std::string& link) {
  struct stat end {};
  if (::stat(link.c_str(), &end) != 0) return errno == ENOENT;
  constexpr unsigned kFirstPseudoTerminal = 136;  // major numbers of the kernel's list of devices
  constexpr unsigned kLastPseudoTerminal = 143;
  const unsigned kind = major(end.st_rdev);
  return S_ISCHR(end.st_mode) && kind >= kFirstPseudoTerminal && kind <= kLastPseudoTerminal;
}

}  // namespace

NodeLink::NodeLink(std::string linkPath, const std::string& target)
    : m_linkPath(std::move(linkPath)), m_target(target) {
  namespace fs = std::filesystem;
  MakeFolderAbove(m_linkPath);
  if (fs::is_symlink(m_linkPath) && IsReplaceable(m_linkPath)) fs::remove(m_linkPath);
  if (::symlink(m_target.c_str(), m_linkPath.c_str()) != 0) Throw(m_linkPath);
}

NodeLink::~NodeLink() {
  // Another program may have put its own link there meanwhile.
  std::error_code ignored;
  if (std::filesystem::read_symlink(m_linkPath, ignored) == m_target) ::unlink(m_linkPath.c_str());
}

}  // namespace quarn::device
