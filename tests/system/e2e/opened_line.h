#pragma once

#include <asm/termbits.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QFile>

namespace quarn::test {

/// A line opened by this process, as another program would.
class OpenedLine {
 public:
  explicit OpenedLine(const QString& node)
      : m_descriptor(open(QFile::encodeName(node).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
  ~OpenedLine() { close(m_descriptor); }
  OpenedLine(const OpenedLine&) = delete;
  OpenedLine& operator=(const OpenedLine&) = delete;

  [[nodiscard]] bool Lock() const { return flock(m_descriptor, LOCK_EX | LOCK_NB) == 0; }
  [[nodiscard]] bool Unlock() const { return flock(m_descriptor, LOCK_UN) == 0; }
  /// Nothing is sent from here on, whoever writes.
  [[nodiscard]] bool Stop() const { return ioctl(m_descriptor, TCXONC, TCOOFF) == 0; }
  [[nodiscard]] unsigned int Speed() const { return Settings().c_ospeed; }
  [[nodiscard]] bool HasTwoStopBits() const { return (Settings().c_cflag & CSTOPB) != 0; }

 private:
  [[nodiscard]] termios2 Settings() const {
    termios2 settings{};
    EXPECT_EQ(ioctl(m_descriptor, TCGETS2, &settings), 0);
    return settings;
  }

  int m_descriptor;
};

}  // namespace quarn::test
