#pragma once

#include <asm/termbits.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <type_traits>

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
  /// `speed`: a constant of the system's, such as B4800.
  [[nodiscard]] bool SetSpeed(unsigned int speed) const {
    termios2 settings = Settings();
    settings.c_cflag = (settings.c_cflag & ~static_cast<unsigned int>(CBAUD)) | speed;
    return ioctl(m_descriptor, TCSETS2, &settings) == 0;
  }
  /// All its settings, to be compared with others.
  [[nodiscard]] QByteArray State() const {
    const termios2 settings = Settings();
    static_assert(std::has_unique_object_representations_v<termios2>);
    return {reinterpret_cast<const char*>(&settings), sizeof settings};
  }

 private:
  [[nodiscard]] termios2 Settings() const {
    termios2 settings{};
    EXPECT_EQ(ioctl(m_descriptor, TCGETS2, &settings), 0);
    return settings;
  }

  int m_descriptor;
};

}  // namespace quarn::test
