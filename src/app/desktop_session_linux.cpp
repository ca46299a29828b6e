#include <QByteArray>
#include <QDesktopServices>
#include <QUrl>
#include <optional>

#include "app/platform.h"
#include "app/session_bus_linux.h"

namespace quarn {
namespace {

constexpr char kPlatform[] = "QT_QPA_PLATFORM";
constexpr char kGtkGl[] = "GDK_GL";
constexpr char kNoBus[] = "disabled:";

/// The address of the bus that is left alone; a null one if the session has no variable. Nothing if the bus
/// is not left alone.
std::optional<QByteArray>& BusLeftAlone() {
  static std::optional<QByteArray> address;
  return address;
}

void SetBus(const QByteArray& address) {
  address.isNull() ? qunsetenv(kBusAddress) : qputenv(kBusAddress, address);
}

/// Windows have places of their own, which only X11 lets a program choose. Where a Wayland session has an X
/// server as well, and nobody has asked for something else, the program uses that one.
bool PrefersX11(const QStringList& arguments) {
  const bool asked = !qEnvironmentVariableIsEmpty(kPlatform) ||
                     arguments.contains(QStringLiteral("-platform")) ||
                     arguments.contains(QStringLiteral("--platform"));
  return !asked && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") && !qEnvironmentVariableIsEmpty("DISPLAY");
}

}  // namespace

DesktopSession::DesktopSession(const QStringList& arguments)
    : m_choseDisplay(PrefersX11(arguments)), m_spareGl(!qEnvironmentVariableIsSet(kGtkGl)) {
  if (m_choseDisplay) qputenv(kPlatform, "xcb;wayland");
  // On GNOME Qt loads GTK, for colours and file dialogs. The first GTK program on a display loads OpenGL,
  // only to ask which kinds of windows it can draw.
  if (m_spareGl) qputenv(kGtkGl, "disable");
  BusLeftAlone().reset();
  if (!NobodyHasBus() && !IsBusSilent(IsComputerBusy)) return;
  BusLeftAlone() = qgetenv(kBusAddress);
  qputenv(kBusAddress, kNoBus);
}

DesktopSession::~DesktopSession() {
  if (m_choseDisplay) qunsetenv(kPlatform);
  if (m_spareGl) qunsetenv(kGtkGl);
}

bool OpenPage(const QUrl& page) {
  const std::optional<QByteArray>& bus = BusLeftAlone();
  if (bus) SetBus(*bus);
  const bool opened = QDesktopServices::openUrl(page);
  if (bus) qputenv(kBusAddress, kNoBus);
  return opened;
}

}  // namespace quarn
