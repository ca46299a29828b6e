#include "serial/open_line_linux.h"

#include <asm/ioctls.h>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "serial/file_descriptor.h"
#include "serial/line_failure_linux.h"
#include "serial/link_path_linux.h"
#include "serial/open_terminal_linux.h"
#include "serial/port_source_linux.h"
#include "serial/port_use_linux.h"
#include "serial/retry_on_eintr_linux.h"
#include "serial/serial_line_linux.h"
#include "serial/termios_state_linux.h"

namespace quarn {
namespace {

/// "Permission denied" alone does not help: name the group that may open the device.
LineFailure NoPermissionFailure(const QString& node, const DeviceNode& device, int error) {
  const std::string known = NoPermissionReason(device);
  const QString reason = known.empty() ? SystemText(error) : QString::fromStdString(known);
  return {LineError::NoPermission, QStringLiteral("%1: %2").arg(node, reason)};
}

OpenResult Failed(LineFailure failure) { return {nullptr, std::move(failure)}; }

/// Which other program uses the device, as text. Empty if none is known.
QString UseOf(const DeviceNode& device) {
  const SystemRoots roots;
  const pid_t user = UsersOf({device}, roots).front();
  return QString::fromStdString(UseText(user, roots));
}

/// The same for a serial device, which another program may have open without a lock. It would read a part of
/// the responses. The near end of a pseudo-terminal may be held by the program at its far end.
QString OpenElsewhere(const DeviceNode& device, TerminalKind kind) {
  const bool isSerialDevice =
      kind == TerminalKind::Uart && IsTerminalDevice(device.status, SystemRoots().sys);
  return isSerialDevice ? UseOf(device) : QString();
}

OpenResult InUse(const QString& node, const QString& use) {
  return Failed({LineError::InUse, QStringLiteral("%1: %2").arg(node, use)});
}

/// Another program has the line, or the system could not tell.
OpenResult NotTaken(const QString& node, const DeviceNode& device, int error) {
  if (LineErrorFromErrno(error) != LineError::InUse) return Failed(FailureOf(node, error));
  const QString use = UseOf(device);
  return InUse(node, use.isEmpty() ? QStringLiteral("in use by another program") : use);
}

/// The lock and the exclusive mark go together: each alone lets some well-known program through. A
/// pseudo-terminal gets the lock only: there the mark outlives a program that crashed, and nobody could
/// open the line again while its far end lives.
///
/// Until it is raw the line may echo, so it is made raw as soon as it is ours. Another program may have
/// opened it after the first check and before the mark was set, so this is checked again at the end.
OpenResult TakeLine(const QString& node, const DeviceNode& device, FileDescriptor line, TerminalKind kind) {
  LineHold hold;
  hold.wake = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!hold.wake.IsValid()) return Failed(FailureOf(node, errno));
  hold.line = std::move(line);
  hold.device = device.status.st_rdev;
  hold.kind = kind;
  const int descriptor = hold.line.Get();
  if (RetryOnEintr([descriptor] { return flock(descriptor, LOCK_EX | LOCK_NB); }) != 0) {
    return NotTaken(node, device, errno);
  }
  if (kind == TerminalKind::Uart && ExclusiveMark::IsSet(descriptor)) return NotTaken(node, device, EBUSY);
  if (ControlLine(descriptor, TCGETS2, &hold.former) != 0) return Failed(FailureOf(node, errno));
  termios2 raw = hold.former;
  MakeRaw(raw);
  if (ControlLine(descriptor, TCSETS2, &raw) != 0) return Failed(FailureOf(node, errno));
  if (kind == TerminalKind::Uart) {
    // Drops the bytes received before it was raw, and their echo.
    FlushLine(descriptor, TCIOFLUSH);
    if (const int notMarked = hold.mark.Set(descriptor); notMarked != 0) {
      ControlLine(descriptor, TCSETS2, &hold.former);
      return NotTaken(node, device, notMarked);
    }
    if (const QString use = OpenElsewhere(device, kind); !use.isEmpty()) {
      hold.mark.Clear();
      ControlLine(descriptor, TCSETS2, &hold.former);
      return InUse(node, use);
    }
    hold.latency.Set(descriptor);
  }
  return {LineOf(node, std::move(hold)), {}};
}

OpenResult OpenNode(const QString& node, std::optional<TerminalKind> knownKind) {
  const QByteArray path = QFile::encodeName(node);
  DeviceNode device{path.toStdString(), {}};
  if (::stat(path.constData(), &device.status) != 0) return Failed(FailureOf(node, errno));
  // Opening a pipe or a disk could have effects that a terminal program must not cause.
  if (!S_ISCHR(device.status.st_mode)) return Failed(FailureOf(node, ENOTTY));
  const TerminalKind kind = knownKind.value_or(
      IsPseudoTerminal(device.status.st_rdev) ? TerminalKind::PseudoTerminal : TerminalKind::Uart);
  if (const QString use = OpenElsewhere(device, kind); !use.isEmpty()) return InUse(node, use);
  constexpr int kFlags = O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
  FileDescriptor line(RetryOnEintr([&] { return ::open(path.constData(), kFlags); }));
  if (line.IsValid()) {
    struct stat opened {};
    if (::fstat(line.Get(), &opened) != 0) return Failed(FailureOf(node, errno));
    // Another device has the name now. It is not the one that was checked.
    if (opened.st_rdev != device.status.st_rdev) return Failed(FailureOf(node, ENODEV));
    return TakeLine(node, device, std::move(line), kind);
  }
  const int error = errno;
  if (LineErrorFromErrno(error) == LineError::NoPermission)
    return Failed(NoPermissionFailure(node, device, error));
  return NotTaken(node, device, error);
}

}  // namespace

OpenResult OpenTerminalDevice(const QString& node) { return OpenNode(node, std::nullopt); }

OpenResult OpenTerminalDeviceAs(const QString& node, TerminalKind kind) { return OpenNode(node, kind); }

OpenResult LinuxLineOpener::Open(const QString& devicePath) {
  const QString prefix = QStringLiteral("\\\\.\\");
  const QString name = devicePath.startsWith(prefix) ? devicePath.mid(prefix.size()) : devicePath;
  const QString node = ResolvePort(m_portsFolder, name);
  if (node.isEmpty()) {
    return Failed({LineError::NotFound, QStringLiteral("%1 is no terminal device").arg(name)});
  }
  return OpenTerminalDevice(node);
}

}  // namespace quarn
