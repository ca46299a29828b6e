#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <csignal>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "serial/file_descriptor.h"

namespace quarn {

/// A pseudo-terminal of the kernel: its far end, and the near end's node.
class PseudoTerminal {
 public:
  PseudoTerminal() : m_farEnd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_TRUE(m_farEnd.IsValid());
    EXPECT_EQ(::grantpt(m_farEnd.Get()), 0);
    EXPECT_EQ(::unlockpt(m_farEnd.Get()), 0);
    char name[64] = {};
    EXPECT_EQ(::ptsname_r(m_farEnd.Get(), name, sizeof name), 0);
    m_node = name;
  }
  [[nodiscard]] const std::string& Node() const { return m_node; }
  void Close() { FileDescriptor gone(std::move(m_farEnd)); }

 private:
  FileDescriptor m_farEnd;
  std::string m_node;
};

/// More than the other programs of this machine open in a moment.
inline constexpr std::size_t kLowerNumbers = 32;

/// A pseudo-terminal whose node does not come back when it is closed, because another program opens one: the
/// kernel gives out the lowest free number, and there are enough below this one.
inline PseudoTerminal TerminalOfHighNumber() {
  const std::vector<PseudoTerminal> below(kLowerNumbers);
  return {};
}

/// A folder that is removed with everything in it.
class ScratchFolder {
 public:
  ScratchFolder() { EXPECT_TRUE(m_folder.isValid()); }
  [[nodiscard]] std::string Path() const { return m_folder.path().toStdString(); }
  [[nodiscard]] std::string At(const std::string& name) const { return Path() + '/' + name; }
  void Folder(const std::string& name) const { EXPECT_EQ(::mkdir(At(name).c_str(), 0700), 0) << name; }
  void Link(const std::string& name, const std::string& target) const {
    EXPECT_EQ(::symlink(target.c_str(), At(name).c_str()), 0) << name;
  }
  void File(const std::string& name, const std::string& text = {}) const {
    const FileDescriptor file(::open(At(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    EXPECT_EQ(::write(file.Get(), text.data(), text.size()), static_cast<ssize_t>(text.size())) << name;
  }
  void Remove(const std::string& name) const { EXPECT_EQ(::unlink(At(name).c_str()), 0) << name; }
  [[nodiscard]] std::string TargetOf(const std::string& name) const {
    char text[4096] = {};
    return ::readlink(At(name).c_str(), text, sizeof text - 1) < 0 ? std::string() : std::string(text);
  }

 private:
  QTemporaryDir m_folder;
};

/// Another process that runs a function and then waits until it is ended.
class OtherProcess {
 public:
  explicit OtherProcess(const std::function<bool()>& start) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    const FileDescriptor ready(ends[0]);
    FileDescriptor done(ends[1]);
    m_pid = ::fork();
    if (m_pid == 0) {
      const char ok = start() ? 1 : 0;
      if (::write(ends[1], &ok, 1) == 1) {
        for (;;) {
          ::pause();
        }
      }
      ::_exit(1);
    }
    done = FileDescriptor();
    char ok = 0;
    EXPECT_EQ(::read(ready.Get(), &ok, 1), 1);
    EXPECT_EQ(ok, 1);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;
  ~OtherProcess() { End(); }
  void End() {
    if (m_pid > 0) {
      ::kill(m_pid, SIGKILL);
      ::waitpid(m_pid, nullptr, 0);
      m_pid = 0;
    }
  }
  [[nodiscard]] pid_t Pid() const { return m_pid; }

 private:
  pid_t m_pid = 0;
};

}  // namespace quarn
