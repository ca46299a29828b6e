#include "serial/serial_line_posix.h"

#include <asm/ioctls.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <optional>
#include <utility>

#include "serial/file_descriptor.h"
#include "serial/line_failure_posix.h"
#include "serial/line_parameters.h"
#include "serial/link_path_linux.h"
#include "serial/open_terminal_linux.h"
#include "serial/port_source_linux.h"
#include "serial/port_use_linux.h"
#include "serial/read_limits.h"
#include "serial/termios_state_linux.h"
#include "serial/uart_linux.h"
#include "serial/uninterrupted_posix.h"

namespace quarn {
namespace {

/// "Permission denied" alone helps nobody: say which group may open the device.
LineFailure NoPermissionFailure(const QString& node, const DeviceNode& device, int error) {
  const std::string hindrance = PermissionHindrance(device);
  const QString reason = hindrance.empty() ? SystemText(error) : QString::fromStdString(hindrance);
  return {LineError::NoPermission, QStringLiteral("%1: %2").arg(node, reason)};
}

enum class Readiness { Ready, TimedOut, Cancelled, Failed };

/// Closing waits no longer than this for queued bytes, however slow the line: a person waits for it.
constexpr std::chrono::seconds kLongestDrain{1};

/// What opening has taken and Close gives back.
struct LineHold {
  FileDescriptor line;
  FileDescriptor wake;
  termios2 former{};
  TerminalKind kind = TerminalKind::Uart;
  // Behind the descriptor that they are about, to be given back before it is closed.
  ExclusiveMark mark;
  LowLatency latency;
};

class PosixSerialLine final : public SerialLine {
 public:
  PosixSerialLine(QString node, LineHold hold) : m_node(std::move(node)), m_hold(std::move(hold)) {}
  ~PosixSerialLine() override { Close(); }
  PosixSerialLine(const PosixSerialLine&) = delete;
  PosixSerialLine& operator=(const PosixSerialLine&) = delete;

  bool GetState(LineState& state) override {
    termios2 current{};
    if (!Control(TCGETS2, &current)) return false;
    state = LineStateOf(current);
    return true;
  }

  bool SetState(const LineState& state) override {
    termios2 earlier{};
    if (!Control(TCGETS2, &earlier)) return false;
    termios2 wanted = earlier;
    if (!ApplyLineState(state, wanted)) {
      return Refuse(QStringLiteral("no such combination of data and stop bits"));
    }
    if (!Control(TCSETS2, &wanted)) return false;
    LineState reported;
    if (!GetState(reported)) {
      // What cannot be looked at is not left in force.
      ControlLine(m_hold.line.Get(), TCSETS2, &earlier);
      return false;
    }
    if (WasTaken(state, reported, m_hold.kind == TerminalKind::PseudoTerminal)) return true;
    Control(TCSETS2, &earlier);
    return Refuse(QStringLiteral("the driver does not take %1; it offers %2")
                      .arg(DescribeLineState(state), DescribeLineState(reported)));
  }

  bool SetTimeouts(const LineTimeouts& timeouts) override {
    if (!ClearError()) return false;
    const std::lock_guard guard(m_fieldMutex);
    m_timeouts = timeouts;
    return true;
  }

  bool Purge() override {
    const std::lock_guard guard(m_lineMutex);
    return FlushLine(m_hold.line.Get(), TCIOFLUSH) == 0 || Fail(errno);
  }

  /// Linux holds no error that would block a line; a state that cannot be read is one that is gone.
  bool ClearError() override {
    LineState ignored;
    return GetState(ignored);
  }

  IoResult Read(char* buffer, std::size_t size) override {
    const std::lock_guard io(m_ioMutex);
    ReadLimits limits(Timeouts(), size, LineClock::now());
    std::size_t got = 0;
    while (got < size) {
      const Readiness readiness = WaitFor(POLLIN, limits.Deadline());
      if (readiness == Readiness::TimedOut) break;
      if (readiness != Readiness::Ready) return {.ok = got > 0, .bytes = got};
      const ssize_t count = ::read(m_hold.line.Get(), buffer + got, size - got);
      if (count > 0) {
        got += static_cast<std::size_t>(count);
        limits.BytesArrived(LineClock::now());
        continue;
      }
      if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
      // Zero bytes from a line that waits for at least one: it has been hung up.
      Fail(count == 0 ? EIO : errno);
      return {.ok = got > 0, .bytes = got};
    }
    return {.ok = true, .bytes = got};
  }

  IoResult Write(const char* data, std::size_t size) override {
    const std::lock_guard io(m_ioMutex);
    const auto deadline = WriteDeadline(Timeouts(), size, LineClock::now());
    std::size_t sent = 0;
    while (sent < size) {
      const Readiness readiness = WaitFor(POLLOUT, deadline);
      if (readiness == Readiness::TimedOut) break;
      if (readiness != Readiness::Ready) return {.ok = sent > 0, .bytes = sent};
      const ssize_t count = ::write(m_hold.line.Get(), data + sent, size - sent);
      if (count >= 0) {
        sent += static_cast<std::size_t>(count);
      } else if (errno != EAGAIN && errno != EINTR) {
        Fail(errno);
        return {.ok = sent > 0, .bytes = sent};
      }
    }
    return {.ok = true, .bytes = sent};
  }

  void CancelIo() override {
    const std::lock_guard guard(m_wakeMutex);
    m_cancelled = true;
    Wake();
  }

  void AllowIo() override {
    const std::lock_guard guard(m_wakeMutex);
    // The wake-up that Close sends is for good.
    if (m_closing) return;
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken =
        Uninterrupted([&] { return ::read(m_hold.wake.Get(), &count, sizeof count); });
    m_cancelled = false;
  }

  bool Close() override {
    {
      const std::lock_guard guard(m_wakeMutex);
      m_closing = true;
      Wake();
    }
    const std::scoped_lock both(m_ioMutex, m_lineMutex);
    if (!m_hold.line.IsValid()) return true;
    GiveBack();
    return m_hold.line.Close() || Fail(errno);
  }

  [[nodiscard]] LineFailure LastFailure() const override {
    const std::lock_guard guard(m_fieldMutex);
    return m_failure;
  }

 private:
  [[nodiscard]] LineTimeouts Timeouts() const {
    const std::lock_guard guard(m_fieldMutex);
    return m_timeouts;
  }

  /// Under m_wakeMutex.
  void Wake() {
    const std::uint64_t one = 1;
    // Can only fail when the counter is full, and then the reader is awake already.
    [[maybe_unused]] const ssize_t written =
        Uninterrupted([&] { return ::write(m_hold.wake.Get(), &one, sizeof one); });
  }

  /// A line whose device is gone takes none of these; there is nothing left to put back then.
  void GiveBack() {
    const int line = m_hold.line.Get();
    if (m_hold.kind == TerminalKind::PseudoTerminal) {
      ControlLine(line, TCSETS2, &m_hold.former);
      return;
    }
    const auto now = LineClock::now();
    const auto longest = now + kLongestDrain;
    const auto deadline = WriteDeadline(Timeouts(), QueuedOutput(line), now).value_or(longest);
    const bool drained = DrainOutput(line, std::min(deadline, longest));
    // The last bytes may still be in the UART's own buffer, and go out at the rate they were meant for. Not
    // so behind a flush: what holds the line up would hold this up, too.
    ControlLine(line, drained ? TCSETSW2 : TCSETS2, &m_hold.former);
    m_hold.latency.PutBack(line);
    m_hold.mark.Clear();
  }

  Readiness Stopped() {
    Fail(m_closing ? EBADF : ECANCELED);
    return Readiness::Cancelled;
  }

  Readiness WaitFor(short events, std::optional<LineClock::time_point> deadline) {
    if (m_closing || m_cancelled) return Stopped();
    std::array<pollfd, 2> polled = {pollfd{m_hold.line.Get(), events, 0},
                                    pollfd{m_hold.wake.Get(), POLLIN, 0}};
    const int count = PollLine(polled, deadline);
    if (count == 0) return Readiness::TimedOut;
    if (count < 0) {
      Fail(errno);
      return Readiness::Failed;
    }
    if (polled[1].revents != 0) return Stopped();
    return Readiness::Ready;  // hang-ups and errors included: the read or write reports them
  }

  bool Control(unsigned long request, void* argument) {
    const std::lock_guard guard(m_lineMutex);
    return ControlLine(m_hold.line.Get(), request, argument) == 0 || Fail(errno);
  }

  bool Fail(int error) {
    const std::lock_guard guard(m_fieldMutex);
    m_failure = FailureOf(m_node, error);
    // The device was there when it was opened: a driver whose adapter is gone says so, too.
    if (m_failure.kind == LineError::NotFound) m_failure.kind = LineError::Disconnected;
    return false;
  }

  bool Refuse(const QString& why) {
    const std::lock_guard guard(m_fieldMutex);
    m_failure = {LineError::Refused, QStringLiteral("%1: %2").arg(m_node, why)};
    return false;
  }

  const QString m_node;
  LineHold m_hold;
  std::atomic<bool> m_cancelled = false;
  std::atomic<bool> m_closing = false;  ///< never false again
  // Lock order: m_ioMutex, m_lineMutex, m_fieldMutex; m_wakeMutex alone.
  std::mutex m_ioMutex;    ///< held by whoever reads, writes or closes
  std::mutex m_lineMutex;  ///< held for one control call, or to close: these must not wait for a read
  std::mutex m_wakeMutex;  ///< held to set or clear the two flags above together with the wake-up
  mutable std::mutex m_fieldMutex;
  LineTimeouts m_timeouts;
  LineFailure m_failure;
};

OpenResult Failed(LineFailure failure) { return {nullptr, std::move(failure)}; }

/// Somebody else has the line, or the system could not say.
OpenResult NotTaken(const QString& node, int error) {
  if (KindOf(error) != LineError::InUse) return Failed(FailureOf(node, error));
  return Failed({LineError::InUse, QStringLiteral("%1: in use by another program").arg(node)});
}

/// The lock and the exclusive mark go together: each alone lets some well-known program through. A
/// pseudo-terminal gets the lock only: there the mark outlives a program that crashed, and nobody could
/// open the line again while its far end lives.
OpenResult TakeLine(const QString& node, FileDescriptor line, TerminalKind kind) {
  LineHold hold;
  hold.line = std::move(line);
  hold.kind = kind;
  const int descriptor = hold.line.Get();
  if (ControlLine(descriptor, TCGETS2, &hold.former) != 0) return Failed(FailureOf(node, errno));
  if (Uninterrupted([descriptor] { return flock(descriptor, LOCK_EX | LOCK_NB); }) != 0) {
    return NotTaken(node, errno);
  }
  const int notMarked = kind == TerminalKind::Uart ? hold.mark.Set(descriptor) : 0;
  if (notMarked != 0) return NotTaken(node, notMarked);
  hold.wake = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!hold.wake.IsValid()) return Failed(FailureOf(node, errno));
  termios2 raw = hold.former;
  MakeRaw(raw);
  if (ControlLine(descriptor, TCSETS2, &raw) != 0) return Failed(FailureOf(node, errno));
  if (kind == TerminalKind::Uart) hold.latency.Set(descriptor);
  return {std::make_shared<PosixSerialLine>(node, std::move(hold)), {}};
}

OpenResult OpenNode(const QString& node, std::optional<TerminalKind> knownKind) {
  const QByteArray path = QFile::encodeName(node);
  struct stat info {};
  if (::stat(path.constData(), &info) != 0) return Failed(FailureOf(node, errno));
  // Opening a pipe or a disk would do things that a terminal program has no business with.
  if (!S_ISCHR(info.st_mode)) return Failed(FailureOf(node, ENOTTY));
  constexpr int kFlags = O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
  FileDescriptor line(Uninterrupted([&] { return ::open(path.constData(), kFlags); }));
  if (!line.IsValid()) {
    const int error = errno;
    if (KindOf(error) == LineError::NoPermission) {
      return Failed(NoPermissionFailure(node, {path.toStdString(), info}, error));
    }
    return NotTaken(node, error);
  }
  const TerminalKind seen =
      IsPseudoTerminal(info.st_rdev) ? TerminalKind::PseudoTerminal : TerminalKind::Uart;
  return TakeLine(node, std::move(line), knownKind.value_or(seen));
}

}  // namespace

OpenResult OpenTerminalDevice(const QString& node) { return OpenNode(node, std::nullopt); }

OpenResult OpenTerminalDeviceAs(const QString& node, TerminalKind kind) { return OpenNode(node, kind); }

OpenResult PosixLineOpener::Open(const QString& devicePath) {
  const QString prefix = QStringLiteral("\\\\.\\");
  const QString name = devicePath.startsWith(prefix) ? devicePath.mid(prefix.size()) : devicePath;
  const QString node = ResolvePort(m_portsFolder, name);
  if (node.isEmpty()) {
    return Failed({LineError::NotFound, QStringLiteral("%1 is no terminal device").arg(name)});
  }
  return OpenTerminalDevice(node);
}

}  // namespace quarn
