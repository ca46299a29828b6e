#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "app/start_requests.h"
#include "app/user_folders_linux.h"
#include "serial/file_descriptor.h"

namespace quarn {
namespace {

/// More than any path has.
constexpr std::size_t kMostBytes = 8192;
constexpr mode_t kPrivateSocket = 0600;

/// The paths of the sockets, beside the locks. Where each run has a session of its own, as in a sandbox, they
/// meet beside the settings; where the settings cannot be written, in the session's folder.
QStringList Places() {
  QStringList places;
  for (const QString& folder : {SessionFolder(), SettingsFolder()}) {
    if (!folder.isEmpty()) places.append(QDir(folder).filePath(QStringLiteral("Quarn.exe.requests")));
  }
  places.removeDuplicates();
  return places;
}

/// A path as the system wants it for a socket. A longer one than fits is named through its folder's
/// descriptor.
class Address {
 public:
  explicit Address(const QString& path) {
    QByteArray name = QFile::encodeName(path);
    if (static_cast<std::size_t>(name.size()) >= sizeof m_address.sun_path) {
      const QFileInfo file(path);
      const QByteArray folder = QFile::encodeName(file.path());
      m_folder = FileDescriptor(::open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
      name = "/proc/self/fd/" + QByteArray::number(m_folder.Get()) + '/' + QFile::encodeName(file.fileName());
    }
    m_address.sun_family = AF_UNIX;
    std::memcpy(m_address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
  }
  [[nodiscard]] const sockaddr* Get() const {
    return static_cast<const sockaddr*>(static_cast<const void*>(&m_address));
  }
  [[nodiscard]] static socklen_t Size() { return sizeof(sockaddr_un); }

 private:
  FileDescriptor m_folder;
  sockaddr_un m_address{};
};

FileDescriptor MakeSocket() {
  return FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// Whether a crashed program has left this socket.
bool IsLeftBehind(const QByteArray& path, const Address& address) {
  struct stat info {};
  if (::lstat(path.constData(), &info) != 0 || !S_ISSOCK(info.st_mode)) return false;
  const FileDescriptor socket = MakeSocket();
  return ::connect(socket.Get(), address.Get(), Address::Size()) != 0 && errno == ECONNREFUSED;
}

/// A socket at this path that only this user reaches; none if the system refuses it, or another program
/// listens there.
FileDescriptor Listen(const QByteArray& path) {
  const Address address(QFile::decodeName(path));
  FileDescriptor socket = MakeSocket();
  // Before it has a name, so that nobody else can use it in between.
  if (::fchmod(socket.Get(), kPrivateSocket) != 0) return {};
  if (::bind(socket.Get(), address.Get(), Address::Size()) == 0) return socket;
  if (errno != EADDRINUSE || !IsLeftBehind(path, address)) return {};
  ::unlink(path.constData());
  if (::bind(socket.Get(), address.Get(), Address::Size()) != 0) return {};
  return socket;
}

bool Send(const QByteArray& bytes, const QString& path) {
  const Address address(path);
  const FileDescriptor socket = MakeSocket();
  return ::sendto(socket.Get(), bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL,
                  address.Get(), Address::Size()) == bytes.size();
}

}  // namespace

class StartRequests::Receiver {
 public:
  explicit Receiver(std::function<void(const QString&)> asked) : m_asked(std::move(asked)) {
    for (const QString& place : Places()) {
      const QByteArray path = QFile::encodeName(place);
      FileDescriptor socket = Listen(path);
      if (socket.IsValid()) m_ears.push_back(std::make_unique<Ear>(path, std::move(socket), m_asked));
    }
  }

 private:
  /// Listens at one path, whose socket goes with the object.
  class Ear {
   public:
    /// `socket` has this path. `asked` outlives the object.
    Ear(QByteArray path, FileDescriptor socket, const std::function<void(const QString&)>& asked)
        : m_path(std::move(path)),
          m_socket(std::move(socket)),
          m_notifier(m_socket.Get(), QSocketNotifier::Read) {
      QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                       [this, &asked] { Receive(asked); });
    }
    ~Ear() { ::unlink(m_path.constData()); }
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;

   private:
    void Receive(const std::function<void(const QString&)>& asked) {
      std::array<char, kMostBytes> bytes{};
      const ssize_t count = ::recv(m_socket.Get(), bytes.data(), bytes.size(), 0);
      if (count >= 0) asked(QFile::decodeName(QByteArray(bytes.data(), static_cast<qsizetype>(count))));
    }

    const QByteArray m_path;
    const FileDescriptor m_socket;
    QSocketNotifier m_notifier;
  };

  const std::function<void(const QString&)> m_asked;
  std::vector<std::unique_ptr<Ear>> m_ears;
};

StartRequests::StartRequests(std::function<void(const QString&)> asked)
    : m_receiver(std::make_unique<Receiver>(std::move(asked))) {}
StartRequests::~StartRequests() = default;

bool AskRunningProgram(const QString& file) {
  const QByteArray bytes = QFile::encodeName(file);
  const QStringList places = Places();
  return std::any_of(places.begin(), places.end(), [&](const QString& path) { return Send(bytes, path); });
}

}  // namespace quarn
