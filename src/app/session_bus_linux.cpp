#include "app/session_bus_linux.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <thread>

#include "serial/file_descriptor.h"
#include "serial/retry_on_eintr_linux.h"

namespace quarn {
namespace {

constexpr char kFolder[] = "XDG_RUNTIME_DIR";
/// docs/performance.md has the times of real answers.
constexpr int kIdleAnswerMs = 5;
constexpr int kBusyAnswerMs = 300;

/// The socket of the session bus; nothing if its address is of another kind, or there is none.
std::optional<QByteArray> BusSocket() {
  QByteArray address = qgetenv(kBusAddress);
  if (address.isEmpty()) {
    const QByteArray folder = qgetenv(kFolder);
    return folder.isEmpty() ? std::nullopt : std::optional(folder + "/bus");
  }
  address = address.split(';').value(0);
  const qsizetype value = address.indexOf('=') + 1;
  const QByteArray name = QByteArray::fromPercentEncoding(address.mid(value).split(',').value(0));
  if (address.startsWith("unix:path=")) return name;
  // A name that begins with a zero byte is not one of a file.
  if (address.startsWith("unix:abstract=")) return QByteArray(1, '\0') + name;
  return std::nullopt;
}

enum class Call { Asked, NobodyListens, Queued };

/// Asks the first question of the protocol: may this user in?
Call AskBus(const FileDescriptor& bus, const QByteArray& socketName) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (bus.Get() < 0 || socketName.size() >= static_cast<qsizetype>(sizeof address.sun_path))
    return Call::NobodyListens;
  std::memcpy(address.sun_path, socketName.constData(), static_cast<std::size_t>(socketName.size()));
  const auto length =
      static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(socketName.size()));
  if (::connect(bus.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0)
    return errno == EAGAIN ? Call::Queued : Call::NobodyListens;
  const QByteArray question =
      QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(::geteuid()).toHex() + "\r\n";
  const ssize_t sent =
      ::send(bus.Get(), question.constData(), static_cast<std::size_t>(question.size()), MSG_NOSIGNAL);
  return sent < 0 ? Call::NobodyListens : Call::Asked;
}

bool IsAnswered(const FileDescriptor& bus, int withinMs) {
  pollfd answer{bus.Get(), POLLIN, 0};
  const QDeadlineTimer end(withinMs);
  return RetryOnEintr([&] { return ::poll(&answer, 1, static_cast<int>(end.remainingTime())); }) != 0;
}

}  // namespace

bool NobodyHasBus() {
  const QByteArray address = qgetenv(kBusAddress);
  if (!address.isEmpty() && address != "autolaunch:") return false;
  const QByteArray folder = qgetenv(kFolder);
  if (!folder.isEmpty() && QFile::exists(QFile::decodeName(folder + "/bus"))) return false;
  const QString launcher = QStringLiteral("dbus-launch");
  return !QFile::exists(QStringLiteral("/usr/bin/") + launcher) &&
         QStandardPaths::findExecutable(launcher).isEmpty();
}

bool IsBusSilent(const std::function<bool()>& isBusy) {
  const std::optional<QByteArray> name = BusSocket();
  if (!name) return false;
  const FileDescriptor bus(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const Call call = AskBus(bus, *name);
  // A queue of callers that is full is a silence as well.
  if (call != Call::Asked) return call == Call::Queued;
  if (IsAnswered(bus, kIdleAnswerMs)) return false;
  return !IsAnswered(bus, isBusy() ? kBusyAnswerMs - kIdleAnswerMs : 0);
}

bool IsComputerBusy() {
  QFile file(QStringLiteral("/proc/loadavg"));
  return !file.open(QIODevice::ReadOnly) || IsBusy(file.readAll(), std::thread::hardware_concurrency());
}

// Three averages of the number of threads that can run, then how many can at the moment, and a slash.
bool IsBusy(const QByteArray& loadAverage, unsigned processors) {
  const QByteArrayList words = loadAverage.simplified().split(' ');
  bool hasAverage = false;
  bool hasNow = false;
  const double lastMinute = words.value(0).toDouble(&hasAverage);
  const int now = words.value(3).split('/').value(0).toInt(&hasNow);
  if (!hasAverage || !hasNow) return true;
  return lastMinute > processors || now > static_cast<int>(processors);
}

}  // namespace quarn
