#include "serial/serial_line_linux.h"

#include <asm/ioctls.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "serial/file_descriptor.h"
#include "serial/limited_wait.h"
#include "serial/line_failure_linux.h"
#include "serial/line_parameters.h"
#include "serial/link_path_linux.h"
#include "serial/open_terminal_linux.h"
#include "serial/port_source_linux.h"
#include "serial/port_use_linux.h"
#include "serial/read_deadline.h"
#include "serial/retry_on_eintr_linux.h"
#include "serial/termios_state_linux.h"
#include "serial/uart_linux.h"

namespace quarn {
namespace {

/// "Permission denied" alone does not help: name the group that may open the device.
LineFailure NoPermissionFailure(const QString& node, const DeviceNode& device, int error) {
  const std::string known = NoPermissionReason(device);
  const QString reason = known.empty() ? SystemText(error) : QString::fromStdString(known);
  return {LineError::NoPermission, QStringLiteral("%1: %2").arg(node, reason)};
}

/// The result of waiting for a line. Without a failure the line is ready, or the time is up.
struct Readiness {
  bool timedOut = false;
  std::optional<LineFailure> failure{};
};

/// The outcome of a read or a write that a failure has ended.
IoResult EndedBy(LineFailure failure, std::size_t bytes) {
  return {.ok = bytes > 0, .bytes = bytes, .failure = std::move(failure)};
}

/// The longest time that closing waits for bytes to be sent, however slow the line is: a person waits.
constexpr std::chrono::milliseconds kLongestDrain{700};
/// The longest time that it takes, with what the driver does after that.
constexpr std::chrono::milliseconds kLongestClose{950};
/// It waits so long for the driver even if another thread's call has taken all that time.
constexpr std::chrono::milliseconds kShortestWaitForDriver{100};
/// The longest time that it lets the driver wait in one call.
constexpr std::chrono::milliseconds kLongestWaitInDriver{100};
/// The longest character: a start bit, eight data bits, parity and two stop bits.
constexpr std::int64_t kMostBits = 12;

/// What opening took, and Close releases.
struct LineHold {
  FileDescriptor line;
  FileDescriptor wake;
  dev_t device = 0;  ///< its number
  termios2 former{};
  TerminalKind kind = TerminalKind::Uart;
  // After the descriptor, so that they are released before it is closed.
  ExclusiveMark mark;
  LowLatency latency;
};

LineFailure FailureOfLine(const QString& node, int error) {
  LineFailure failure = FailureOf(node, error);
  // The device existed when it was opened. A driver whose adapter is gone also gives this error.
  if (failure.kind == LineError::NotFound) failure.kind = LineError::Disconnected;
  return failure;
}

/// Bytes that are not sent in time are dropped: the driver would wait for them at the close. `sentBy`: when
/// the chip has sent all bytes that were written.
void LetBytesGoOut(int line, const LineTimeouts& timeouts, LineClock::time_point sentBy) {
  const auto now = LineClock::now();
  const auto longest = now + kLongestDrain;
  const auto deadline = WriteDeadline(timeouts, QueuedOutput(line), now).value_or(longest);
  // The last bytes may still be in the chip's buffer. They must be sent at their own rate.
  if (DrainOutput(line, std::min(deadline, longest))) {
    std::this_thread::sleep_until(std::min(sentBy, longest));
  }
}

/// Restores what opening changed. All of these calls fail if the device is gone; then there is nothing to
/// restore.
///
/// A line that echoes sends received bytes back to the instrument. So the echo flag is restored last, by a
/// call of its own, right before the descriptor is closed.
LineResult GiveBackAndClose(LineHold& hold, const QString& node) {
  const WaitLimit limit(kLongestWaitInDriver);
  const int line = hold.line.Get();
  hold.latency.PutBack(line);
  hold.mark.Clear();
  termios2 quiet = hold.former;
  if (hold.kind == TerminalKind::Uart && MakeQuiet(quiet)) {
    ControlLineBriefly(line, TCSETS2, &quiet);
    FlushLine(line, TCIFLUSH);
  }
  ControlLineBriefly(line, TCSETS2, &hold.former);
  return hold.line.Close() ? LineResult() : LineResult(FailureOfLine(node, errno));
}

class LinuxSerialLine final : public SerialLine {
 public:
  LinuxSerialLine(QString node, LineHold hold)
      : m_node(std::move(node)),
        m_nodePath(QFile::encodeName(m_node)),
        m_hold(std::move(hold)),
        m_baudRate(m_hold.former.c_ospeed) {}
  ~LinuxSerialLine() override { Close(); }
  LinuxSerialLine(const LinuxSerialLine&) = delete;
  LinuxSerialLine& operator=(const LinuxSerialLine&) = delete;

  LineResult GetState(LineState& state) override {
    termios2 current{};
    if (LineResult got = Control(TCGETS2, &current); !got) return got;
    state = LineStateOf(current);
    return {};
  }

  LineResult SetState(const LineState& state) override {
    termios2 earlier{};
    if (LineResult got = Control(TCGETS2, &earlier); !got) return got;
    termios2 wanted = earlier;
    if (!ApplyLineState(state, wanted)) {
      return Refuse(QStringLiteral("no such combination of data and stop bits"));
    }
    if (LineResult set = Control(TCSETS2, &wanted); !set) return set;
    LineState reported;
    if (LineResult looked = GetState(reported); !looked) {
      // A state that cannot be checked must not stay.
      Control(TCSETS2, &earlier);
      return looked;
    }
    if (WasTaken(state, reported, m_hold.kind == TerminalKind::PseudoTerminal)) {
      m_baudRate = state.baudRate;
      return {};
    }
    Control(TCSETS2, &earlier);
    return Refuse(QStringLiteral("the driver does not take %1; it offers %2")
                      .arg(DescribeLineState(state), DescribeLineState(reported)));
  }

  LineResult SetTimeouts(const LineTimeouts& timeouts) override {
    if (LineResult cleared = ClearError(); !cleared) return cleared;
    const std::lock_guard guard(m_timeoutsMutex);
    m_timeouts = timeouts;
    return {};
  }

  LineResult SetModemLines(const ModemLines& lines) override {
    // A driver without modem lines fails with several errors, also with that of a line that is gone.
    if (LineResult usable = ClearError(); !usable) return usable;
    const std::lock_guard guard(m_lineMutex);
    for (const auto& [level, line] : {std::pair{lines.dtr, TIOCM_DTR}, {lines.rts, TIOCM_RTS}}) {
      int bits = line;
      if (!level || ControlLine(m_hold.line.Get(), *level ? TIOCMBIS : TIOCMBIC, &bits) == 0) continue;
      return Refuse(
          QStringLiteral("%1 cannot be set: %2")
              .arg(line == TIOCM_DTR ? QStringLiteral("DTR") : QStringLiteral("RTS"), SystemText(errno)));
    }
    return {};
  }

  LineResult Purge() override {
    const std::lock_guard guard(m_lineMutex);
    return Conclude(FlushLine(m_hold.line.Get(), TCIOFLUSH) == 0);
  }

  /// Linux keeps no error that blocks a line. If the state cannot be read, the device is gone.
  LineResult ClearError() override {
    LineState ignored;
    return GetState(ignored);
  }

  IoResult Read(char* buffer, std::size_t size) override {
    const std::lock_guard io(m_ioMutex);
    ReadDeadline deadline(Timeouts(), size, LineClock::now());
    std::size_t got = 0;
    while (got < size) {
      Readiness readiness = WaitFor(POLLIN, deadline.Time());
      if (readiness.failure) return EndedBy(std::move(*readiness.failure), got);
      if (readiness.timedOut) break;
      const ssize_t count = ::read(m_hold.line.Get(), buffer + got, size - got);
      if (count > 0) {
        got += static_cast<std::size_t>(count);
        deadline.BytesArrived(LineClock::now());
        continue;
      }
      if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
      const int error = count == 0 ? EIO : errno;
      // No bytes are a hang-up, unless another program has set the line to wait for none: then somebody has
      // taken the bytes that were there.
      if (count == 0 && !HasHungUp()) continue;
      return EndedBy(Break(error), got);
    }
    return {.ok = true, .bytes = got};
  }

  IoResult Write(const char* data, std::size_t size) override {
    const std::lock_guard io(m_ioMutex);
    const auto deadline = WriteDeadline(Timeouts(), size, LineClock::now());
    std::size_t sent = 0;
    while (sent < size) {
      Readiness readiness = WaitFor(POLLOUT, deadline);
      if (readiness.failure) return EndedBy(std::move(*readiness.failure), sent);
      if (readiness.timedOut) break;
      const ssize_t count = ::write(m_hold.line.Get(), data + sent, size - sent);
      if (count >= 0) {
        sent += static_cast<std::size_t>(count);
        m_sentBy = std::max(m_sentBy, LineClock::now()) + TimeToSend(count);
      } else if (errno != EAGAIN && errno != EINTR) {
        return EndedBy(Break(errno), sent);
      }
    }
    return {.ok = true, .bytes = sent};
  }

  void CancelIo() override {
    {
      const std::lock_guard guard(m_wakeMutex);
      m_cancelled = true;
      if (!m_closing) Wake();
    }
    // AllowIo clears the wake-up: until then it must have been seen.
    const std::lock_guard ended(m_ioMutex);
  }

  void AllowIo() override {
    const std::lock_guard guard(m_wakeMutex);
    // The wake-up that Close sends is never cleared.
    if (m_closing) return;
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken =
        RetryOnEintr([&] { return ::read(m_hold.wake.Get(), &count, sizeof count); });
    m_cancelled = false;
  }

  LineResult Close() override {
    {
      const std::lock_guard guard(m_wakeMutex);
      m_closing = true;
      Wake();
    }
    const auto end = LineClock::now() + kLongestClose;
    const std::scoped_lock both(m_ioMutex, m_lineMutex);
    if (!m_hold.line.IsValid()) return {};
    if (m_hold.kind == TerminalKind::PseudoTerminal) return GiveBackAndClose(m_hold, m_node);
    // A driver whose adapter does not answer may wait for seconds, and no signal ends that.
    std::shared_ptr<LineHold> hold;
    try {
      hold = std::make_shared<LineHold>(std::move(m_hold));
    } catch (const std::bad_alloc&) {
      LetBytesGoOut(m_hold.line.Get(), Timeouts(), m_sentBy);
      return GiveBackAndClose(m_hold, m_node);
    }
    m_hold.wake = std::move(hold->wake);  // other threads may still use it
    const auto close = [hold, node = m_node, timeouts = Timeouts(), sentBy = m_sentBy] {
      LineHold whole = std::move(*hold);
      LetBytesGoOut(whole.line.Get(), timeouts, sentBy);
      return GiveBackAndClose(whole, node);
    };
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - LineClock::now());
    if (const auto closed = DoWithin(std::max(left, kShortestWaitForDriver), close)) return *closed;
    return LineResult({LineError::Other, m_node + QStringLiteral(": the driver has not closed it yet")});
  }

  bool IsLost() override {
    const std::lock_guard guard(m_lineMutex);
    if (!m_hold.line.IsValid()) return false;
    if (m_broken) return true;
    return HasHungUp() || HasLostItsNode();
  }

 private:
  [[nodiscard]] LineTimeouts Timeouts() const {
    const std::lock_guard guard(m_timeoutsMutex);
    return m_timeouts;
  }

  /// Under m_wakeMutex.
  void Wake() {
    const std::uint64_t one = 1;
    // This fails only if the counter is full, and then the reader is awake already.
    [[maybe_unused]] const ssize_t written =
        RetryOnEintr([&] { return ::write(m_hold.wake.Get(), &one, sizeof one); });
  }

  /// The longest time that a UART needs, if nothing stops it.
  [[nodiscard]] LineClock::duration TimeToSend(ssize_t bytes) const {
    const auto rate = std::max<std::int64_t>(m_baudRate, 1);
    return std::chrono::microseconds(kMostBits * std::int64_t{bytes} * std::int64_t{1'000'000} / rate);
  }

  [[nodiscard]] Readiness Stopped() const {
    return {.failure = FailureOfLine(m_closing ? EBADF : ECANCELED)};
  }

  Readiness WaitFor(short events, std::optional<LineClock::time_point> deadline) {
    if (m_closing || m_cancelled) return Stopped();
    std::array<pollfd, 2> polled = {pollfd{m_hold.line.Get(), events, 0},
                                    pollfd{m_hold.wake.Get(), POLLIN, 0}};
    const int count = PollLine(polled, deadline);
    if (count == 0) return {.timedOut = true};
    if (count < 0) return {.failure = FailureOfLine(errno)};
    if (polled[1].revents != 0) return Stopped();
    return {};  // also for hang-ups and errors, which the read or write reports
  }

  LineResult Control(unsigned long request, void* argument) {
    const std::lock_guard guard(m_lineMutex);
    return Conclude(ControlLine(m_hold.line.Get(), request, argument) == 0);
  }

  /// With the last system error if a call was not `done`.
  [[nodiscard]] LineResult Conclude(bool done) const {
    return done ? LineResult() : LineResult(FailureOfLine(errno));
  }

  [[nodiscard]] LineFailure FailureOfLine(int error) const { return quarn::FailureOfLine(m_node, error); }

  /// A read or a write has failed.
  LineFailure Break(int error) {
    LineFailure failure = FailureOfLine(error);
    if (failure.kind == LineError::Disconnected) m_broken = true;
    return failure;
  }

  [[nodiscard]] bool HasHungUp() const {
    pollfd polled{m_hold.line.Get(), 0, 0};
    const int ready = RetryOnEintr([&] { return ::poll(&polled, 1, 0); });
    return ready > 0 && (polled.revents & (POLLHUP | POLLERR)) != 0;
  }

  /// Whether the device that was opened is no longer the one under its name.
  [[nodiscard]] bool HasLostItsNode() const {
    struct stat node {};
    if (::stat(m_nodePath.constData(), &node) != 0) return errno == ENOENT;
    return !S_ISCHR(node.st_mode) || node.st_rdev != m_hold.device;
  }

  [[nodiscard]] LineFailure Refuse(const QString& why) const {
    return {LineError::Refused, QStringLiteral("%1: %2").arg(m_node, why)};
  }

  const QString m_node;
  const QByteArray m_nodePath;  ///< the same, encoded: it is looked at often
  LineHold m_hold;
  std::atomic<std::uint32_t> m_baudRate;
  LineClock::time_point m_sentBy;  ///< when a UART has sent all written bytes; under m_ioMutex
  std::atomic<bool> m_cancelled = false;
  std::atomic<bool> m_closing = false;  ///< once true, stays true
  std::atomic<bool> m_broken = false;   ///< once true, stays true
  // Lock order: m_ioMutex, m_lineMutex; the others alone, or after these.
  std::mutex m_ioMutex;    ///< held to read, write or close
  std::mutex m_lineMutex;  ///< held for one control call, or to close; neither waits for a read
  std::mutex m_wakeMutex;  ///< held to set or clear the two flags above together with the wake-up
  mutable std::mutex m_timeoutsMutex;
  LineTimeouts m_timeouts;
};

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
  return {std::make_shared<LinuxSerialLine>(node, std::move(hold)), {}};
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
