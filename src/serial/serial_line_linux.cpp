#include "serial/serial_line_linux.h"

#include <asm/ioctls.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "serial/limited_wait.h"
#include "serial/line_failure_linux.h"
#include "serial/line_parameters.h"
#include "serial/read_deadline.h"
#include "serial/retry_on_eintr_linux.h"
#include "serial/termios_state_linux.h"
#include "serial/uart_linux.h"

namespace quarn {
namespace {

/// The result of waiting for a line. Without a failure the line is ready, or the time is up.
struct Readiness {
  bool timedOut = false;
  std::optional<LineFailure> failure{};
};

/// The outcome of a read or a write that a failure has ended.
IoResult EndedBy(LineFailure failure, std::size_t bytes) {
  return {.ok = bytes > 0, .bytes = bytes, .failure = std::move(failure)};
}

/// The longest time that it takes, with what the driver does after that.
constexpr std::chrono::milliseconds kLongestClose{950};
/// It waits so long for the driver even if another thread's call has taken all that time.
constexpr std::chrono::milliseconds kShortestWaitForDriver{100};
/// The longest character: a start bit, eight data bits, parity and two stop bits.
constexpr std::int64_t kMostBits = 12;

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

}  // namespace

std::shared_ptr<SerialLine> LineOf(const QString& node, LineHold hold) {
  return std::make_shared<LinuxSerialLine>(node, std::move(hold));
}

}  // namespace quarn
