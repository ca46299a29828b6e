#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace quarn {

/// Why a line operation failed: a fixed set of values for decisions, and the system's text for the user.
enum class LineError {
  None,
  NotFound,      ///< no such port, or not a terminal device
  NoPermission,  ///< the user may not open the device
  InUse,         ///< another program holds the line
  Refused,       ///< the driver refuses the requested parameters
  Disconnected,  ///< the far end or the adapter is gone
  Cancelled,     ///< CancelIo ended a read or a write
  Other,
};

struct LineFailure {
  LineError kind = LineError::None;
  QString reason{};  ///< for the user; names the device
};

/// Whether an operation on a line succeeded, and if not, why. It is the failure of this call, whatever other
/// threads do with the line. True after a success.
class LineResult {
 public:
  LineResult() = default;
  /// Not explicit: an operation that fails returns its failure.
  LineResult(LineFailure failure) : m_failure(std::move(failure)) {}

  explicit operator bool() const { return !m_failure; }
  /// Of kind None after a success.
  [[nodiscard]] LineFailure Failure() const { return m_failure.value_or(LineFailure()); }

 private:
  std::optional<LineFailure> m_failure;
};

/// Number of stop bits; the numbers are those of the comm API.
enum class StopBits : std::uint8_t { One = 0, OnePointFive = 1, Two = 2 };

/// Parity; the numbers are those of the comm API.
enum class Parity : std::uint8_t { None = 0, Odd = 1, Even = 2 };

/// The four line parameters that the program sets. The rest of the driver's state stays as it was when the
/// line was opened.
struct LineState {
  std::uint32_t baudRate = 9600;  ///< bits per second
  std::uint8_t byteSize = 8;      ///< data bits, 5 to 8
  StopBits stopBits = StopBits::One;
  Parity parity = Parity::None;

  bool operator==(const LineState&) const = default;
};

/// The modem lines that the computer drives. nullopt: stays as it is.
struct ModemLines {
  std::optional<bool> dtr{};
  std::optional<bool> rts{};
};

/// The five time-outs of the comm API, all in milliseconds (the multipliers: per requested byte).
///  - A read ends when, after its first byte, no further byte came for `readInterval` (0: never).
///  - It also ends `readTotalMultiplier` x requested bytes + `readTotalConstant` after it was called
///    (both 0: never). A write has the same total limit with its own two values.
///  - readInterval 0xFFFFFFFF with both totals 0: takes the received bytes and returns at once.
struct LineTimeouts {
  std::uint32_t readInterval = 0;
  std::uint32_t readTotalMultiplier = 0;
  std::uint32_t readTotalConstant = 0;
  std::uint32_t writeTotalMultiplier = 0;
  std::uint32_t writeTotalConstant = 0;

  bool operator==(const LineTimeouts&) const = default;
};

/// Outcome of one Read or Write. A time-out is not a failure: fewer bytes were moved than requested, possibly
/// none. If the line breaks, or CancelIo or Close ends the call, after some bytes were moved, the call
/// succeeds with these bytes and the next call fails.
struct IoResult {
  bool ok = false;
  std::size_t bytes = 0;
  /// Why the call failed, or ended after some bytes. Kind None otherwise.
  LineFailure failure{};
};

/// One open serial line, in the terms of the comm API, so that both platforms behave alike.
///
/// Threads: one thread reads or writes at a time. CancelIo and Close may be called from another thread
/// while a Read or Write is blocked: they wake it first, and nothing is closed under a reader.
class SerialLine {
 public:
  virtual ~SerialLine() = default;

  virtual LineResult GetState(LineState& state) = 0;
  /// If the driver refuses one of the four parameters, fails and leaves the line as it was.
  virtual LineResult SetState(const LineState& state) = 0;
  virtual LineResult SetTimeouts(const LineTimeouts& timeouts) = 0;
  virtual LineResult SetModemLines(const ModemLines& lines) = 0;
  /// Drops bytes that are not sent yet, and received bytes that are not read yet.
  virtual LineResult Purge() = 0;
  /// Clears a communication error that the driver holds.
  virtual LineResult ClearError() = 0;
  virtual IoResult Read(char* buffer, std::size_t size) = 0;
  virtual IoResult Write(const char* data, std::size_t size) = 0;
  /// Ends a Read or Write of another thread, waits until it has ended, and refuses every later one with
  /// LineError::Cancelled until AllowIo is called. On Windows, where a driver need not let go, it waits less
  /// than a second.
  virtual void CancelIo() = 0;
  virtual void AllowIo() = 0;
  /// Restores the driver's former state and closes. Fails if the system reports a failure; the line is
  /// closed anyway. Afterwards every operation fails with LineError::Disconnected, also after AllowIo. Waits
  /// less than a second for queued bytes to be sent, and drops the rest. Returns within a second whatever the
  /// driver does, if the system has a thread for it. A second call does nothing, and succeeds.
  virtual LineResult Close() = 0;
  /// Whether the line is lost: it was hung up, its device is gone, or another device has its place. Once a
  /// read or write has found this, it does not change. May be called at any time, is fast and never waits for
  /// a read. False if this is not known, and for a closed line.
  virtual bool IsLost() = 0;
};

struct OpenResult {
  std::shared_ptr<SerialLine> line;  ///< null when the open failed
  LineFailure failure;
};

/// Opens lines for exclusive use by their device path: a port name ("COM3"), or, for two-digit names,
/// the prefix \\.\ and the name.
class SerialLineOpener {
 public:
  virtual ~SerialLineOpener() = default;
  virtual OpenResult Open(const QString& devicePath) = 0;
};

}  // namespace quarn
