#pragma once

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string>

#include "device/pseudo_terminal.h"
#include "serial/line_test_support.h"
#include "serial/open_line_linux.h"

namespace quarn {

inline constexpr std::size_t kReadSize = 8191;

/// A line on a pseudo-terminal whose far end the test holds.
class PtyLineTest : public testing::Test {
 protected:
  struct ReadOutcome {
    IoResult result;
    std::string bytes;
  };

  void SetUp() override {
    const OpenResult opened = OpenTerminalDevice(QString::fromStdString(m_far.NodePath()));
    ASSERT_TRUE(opened.line) << opened.failure.reason.toStdString();
    m_line = opened.line;
  }

  ReadOutcome Read(std::size_t size = kReadSize) const {
    std::string bytes(size, '\0');
    const IoResult result = m_line->Read(bytes.data(), size);
    bytes.resize(result.bytes);
    return {result, bytes};
  }
  [[nodiscard]] auto ReadInThread(std::size_t size = kReadSize) const {
    return InThread([this, size] { return Read(size); });
  }
  IoResult Write(const std::string& bytes) const { return m_line->Write(bytes.data(), bytes.size()); }

  /// The far end sends. All bytes are in the line when this returns.
  void FarSends(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = ::write(m_far.Descriptor(), bytes.data(), bytes.size());
      if (count > 0) {
        bytes.remove_prefix(static_cast<std::size_t>(count));
      } else {
        ASSERT_TRUE(errno == EAGAIN || errno == EINTR);
        ASSERT_TRUE(AwaitFar(POLLOUT));
      }
    }
  }
  /// What the far end receives, up to `count` bytes.
  [[nodiscard]] std::string FarReceives(std::size_t count) const {
    std::string received;
    std::array<char, 4096> buffer{};
    while (received.size() < count) {
      const ssize_t got = ::read(m_far.Descriptor(), buffer.data(), buffer.size());
      if (got > 0) {
        received.append(buffer.data(), static_cast<std::size_t>(got));
      } else if (!AwaitFar(POLLIN)) {
        break;
      }
    }
    return received;
  }
  /// Writes until the line takes no more: the far end does not read. The kernel hands the bytes on to the far
  /// end's queue when it has time for it, and the line takes more then: so this queue must be full first.
  void FillLine() const {
    ASSERT_TRUE(m_line->SetTimeouts({.writeTotalConstant = 20}));
    ASSERT_TRUE(Eventually([this] {
      const bool full = FarHolds() >= kFarQueue;
      return Write(std::string(65536, 'w')).bytes == 0 && full;
    }));
  }

  device::PseudoTerminal m_far;
  std::shared_ptr<SerialLine> m_line;

 private:
  static constexpr int kFarQueue = 4095;  ///< what the kernel's line discipline holds

  [[nodiscard]] int FarHolds() const {
    int bytes = 0;
    EXPECT_EQ(::ioctl(m_far.Descriptor(), FIONREAD, &bytes), 0);
    return bytes;
  }
  [[nodiscard]] bool AwaitFar(short events) const {
    pollfd polled{m_far.Descriptor(), events, 0};
    const auto patience = std::chrono::milliseconds(kPatience).count();
    return ::poll(&polled, 1, static_cast<int>(patience)) == 1;
  }
};

}  // namespace quarn
