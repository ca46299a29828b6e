#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QString>
#include <cstring>

namespace quarn::test {

/// A server whose callers get no answer, as from a program that has been stopped, unless a test gives one.
class SilentSocket {
 public:
  explicit SilentSocket(const QString& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    EXPECT_LT(static_cast<std::size_t>(name.size()), sizeof address.sun_path);
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    EXPECT_EQ(::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    constexpr int kCallers = 16;
    EXPECT_EQ(::listen(m_socket, kCallers), 0);
  }
  ~SilentSocket() { ::close(m_socket); }
  SilentSocket(const SilentSocket&) = delete;
  SilentSocket& operator=(const SilentSocket&) = delete;
  [[nodiscard]] int Descriptor() const { return m_socket; }

 private:
  const int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

}  // namespace quarn::test
