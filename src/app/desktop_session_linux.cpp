#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QFile>
#include <QStandardPaths>
#include <QUrl>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>

#include "app/platform.h"
#include "serial/file_descriptor.h"
#include "serial/retry_on_eintr_linux.h"

namespace quarn {
namespace {

constexpr char kPlatform[] = "QT_QPA_PLATFORM";
constexpr char kBus[] = "DBUS_SESSION_BUS_ADDRESS";
constexpr char kGtkGl[] = "GDK_GL";
constexpr char kNoBus[] = "disabled:";
/// A bus answers within a millisecond; on a computer with four times more to do than it has processors within
/// 40.
constexpr int kBusAnswerMs = 300;

/// The address of the bus that is left alone; a null one if the session has no variable. Nothing if the bus
/// is not left alone.
std::optional<QByteArray>& BusLeftAlone() {
  static std::optional<QByteArray> address;
  return address;
}

void SetBus(const QByteArray& address) { address.isNull() ? qunsetenv(kBus) : qputenv(kBus, address); }

/// Windows have places of their own, which only X11 lets a program choose. Where a Wayland session has an X
/// server as well, and nobody has asked for something else, the program uses that one.
bool PrefersX11(const QStringList& arguments) {
  const bool asked = !qEnvironmentVariableIsEmpty(kPlatform) ||
                     arguments.contains(QStringLiteral("-platform")) ||
                     arguments.contains(QStringLiteral("--platform"));
  return !asked && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") && !qEnvironmentVariableIsEmpty("DISPLAY");
}

/// The socket of the session bus; nothing if its address is of another kind, or there is none.
std::optional<QByteArray> BusSocket() {
  QByteArray address = qgetenv(kBus);
  if (address.isEmpty()) {
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
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

/// Whether the session has no bus, and no program that the D-Bus library would start to get one.
bool NobodyHasBus() {
  const QByteArray address = qgetenv(kBus);
  if (!address.isEmpty() && address != "autolaunch:") return false;
  const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
  if (!folder.isEmpty() && QFile::exists(QFile::decodeName(folder + "/bus"))) return false;
  const QString launcher = QStringLiteral("dbus-launch");
  return !QFile::exists(QStringLiteral("/usr/bin/") + launcher) &&
         QStandardPaths::findExecutable(launcher).isEmpty();
}

/// Whether somebody listens there and says nothing for so long. A first question of the protocol: may this
/// user in?
bool IsSilent(const QByteArray& socketName) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketName.size() >= static_cast<qsizetype>(sizeof address.sun_path)) return false;
  std::memcpy(address.sun_path, socketName.constData(), static_cast<std::size_t>(socketName.size()));
  const auto length =
      static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(socketName.size()));
  const FileDescriptor bus(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (bus.Get() < 0) return false;
  // A queue of callers that is full is a silence as well.
  if (::connect(bus.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0) return errno == EAGAIN;
  const QByteArray question =
      QByteArray(1, '\0') + "AUTH EXTERNAL " + QByteArray::number(::geteuid()).toHex() + "\r\n";
  if (::send(bus.Get(), question.constData(), static_cast<std::size_t>(question.size()), MSG_NOSIGNAL) < 0)
    return false;
  pollfd answer{bus.Get(), POLLIN, 0};
  const QDeadlineTimer end(kBusAnswerMs);
  return RetryOnEintr([&] { return ::poll(&answer, 1, static_cast<int>(end.remainingTime())); }) == 0;
}

}  // namespace

DesktopSession::DesktopSession(const QStringList& arguments)
    : m_choseDisplay(PrefersX11(arguments)), m_spareGl(!qEnvironmentVariableIsSet(kGtkGl)) {
  if (m_choseDisplay) qputenv(kPlatform, "xcb;wayland");
  // On GNOME Qt loads GTK, for colours and file dialogs. The first GTK program on a display loads OpenGL,
  // only to ask which kinds of windows it can draw.
  if (m_spareGl) qputenv(kGtkGl, "disable");
  const std::optional<QByteArray> bus = BusSocket();
  // Qt would wait for its answer, or for a search in vain, before it shows the first window.
  BusLeftAlone().reset();
  if (!NobodyHasBus() && !(bus && IsSilent(*bus))) return;
  BusLeftAlone() = qgetenv(kBus);
  qputenv(kBus, kNoBus);
}

DesktopSession::~DesktopSession() {
  if (m_choseDisplay) qunsetenv(kPlatform);
  if (m_spareGl) qunsetenv(kGtkGl);
}

bool OpenPage(const QUrl& page) {
  const std::optional<QByteArray>& bus = BusLeftAlone();
  if (bus) SetBus(*bus);
  const bool opened = QDesktopServices::openUrl(page);
  if (bus) qputenv(kBus, kNoBus);
  return opened;
}

}  // namespace quarn
