#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QSocketNotifier>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "app/start_requests.h"
#include "app/user_folders_linux.h"

namespace quarn {
namespace {

/// More than any path has.
constexpr std::size_t kMostBytes = 8192;

/// Beside the lock. nullopt if there is no folder, or its name is too long for a socket.
std::optional<sockaddr_un> Address() {
  QString folder = SessionFolder();
  if (folder.isEmpty()) folder = SettingsFolder();
  const QByteArray path = QFile::encodeName(QDir(folder).filePath(QStringLiteral("Quarn.exe.requests")));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (folder.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof address.sun_path)
    return std::nullopt;
  std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
  return address;
}

const sockaddr* Generic(const sockaddr_un& address) {
  return static_cast<const sockaddr*>(static_cast<const void*>(&address));
}

int MakeSocket() { return ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }

}  // namespace

class StartRequests::Receiver {
 public:
  explicit Receiver(std::function<void(const QString&)> asked) : m_asked(std::move(asked)) {
    const auto address = Address();
    if (!address) return;
    // One that a crashed program left. The lock is ours, so nobody listens there.
    ::unlink(address->sun_path);
    m_socket = MakeSocket();
    if (m_socket < 0 || ::bind(m_socket, Generic(*address), sizeof *address) != 0) return;
    m_path = address->sun_path;
    m_notifier.emplace(m_socket, QSocketNotifier::Read);
    QObject::connect(&*m_notifier, &QSocketNotifier::activated, &*m_notifier, [this] { Receive(); });
  }
  ~Receiver() {
    m_notifier.reset();
    if (m_socket >= 0) ::close(m_socket);
    if (!m_path.isEmpty()) ::unlink(m_path.constData());
  }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

 private:
  void Receive() {
    std::array<char, kMostBytes> bytes{};
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count >= 0) m_asked(QFile::decodeName(QByteArray(bytes.data(), static_cast<qsizetype>(count))));
  }

  const std::function<void(const QString&)> m_asked;
  int m_socket = -1;
  QByteArray m_path;
  std::optional<QSocketNotifier> m_notifier;
};

StartRequests::StartRequests(std::function<void(const QString&)> asked)
    : m_receiver(std::make_unique<Receiver>(std::move(asked))) {}
StartRequests::~StartRequests() = default;

bool AskRunningProgram(const QString& file) {
  const auto address = Address();
  const int socket = address ? MakeSocket() : -1;
  if (socket < 0) return false;
  const QByteArray bytes = QFile::encodeName(file);
  const ssize_t sent = ::sendto(socket, bytes.constData(), static_cast<std::size_t>(bytes.size()),
                                MSG_NOSIGNAL, Generic(*address), sizeof *address);
  ::close(socket);
  return sent == bytes.size();
}

}  // namespace quarn
