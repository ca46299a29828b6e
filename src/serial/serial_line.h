#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace quarn {

/// Why a line operation failed: a closed set for decisions, and the system's own words for people.
enum class LineError {
  None,
  NotFound,      ///< no such port, or what stands there is no terminal device
  NoPermission,  ///< the user may not open the device
  InUse,         ///< another program holds the line
  Refused,       ///< the driver does not take the requested parameters
  Disconnected,  ///< the far end or the adapter is gone
  Cancelled,     ///< CancelIo ended a read or a write
  Other,
};

struct LineFailure {
  LineError kind = LineError::None;
  QString reason{};  ///< for people; names the device
};

/// Whether an operation on a line was done, and if not, why: the failure of that one call, whatever other
/// threads do with the line meanwhile. True when it was done.
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

/// Number of stop bits as the line knows them; the numbers are the comm API's.
enum class StopBits : std::uint8_t { One = 0, OnePointFive = 1, Two = 2 };

/// Parity; the numbers are the comm API's.
enum class Parity : std::uint8_t { None = 0, Odd = 1, Even = 2 };

/// The four line parameters that the program sets. Everything else of the driver's state stays as the
/// driver had it when the line was opened.
struct LineState {
  std::uint32_t baudRate = 9600;  ///< bits per second
  std::uint8_t byteSize = 8;      ///< data bits, 5 to 8
  StopBits stopBits = StopBits::One;
  Parity parity = Parity::None;

  bool operator==(const LineState&) const = default;
};

/// The five time-outs of the comm API, all in milliseconds (the multipliers: per requested byte).
///  - A read ends when, after its first byte, no further byte came for `readInterval` (0: never).
///  - It also ends `readTotalMultiplier` x requested bytes + `readTotalConstant` after it was called
///    (both 0: never). A write has the same total limit with its own two values.
///  - readInterval 0xFFFFFFFF with both totals 0 takes what is there and returns at once.
struct LineTimeouts {
  std::uint32_t readInterval = 0;
  std::uint32_t readTotalMultiplier = 0;
  std::uint32_t readTotalConstant = 0;
  std::uint32_t writeTotalMultiplier = 0;
  std::uint32_t writeTotalConstant = 0;

  bool operator==(const LineTimeouts&) const = default;
};

/// Outcome of one Read or Write. A call that ran into a time-out is not failed: it moved fewer bytes
/// than were asked for, possibly none. When the line breaks, or CancelIo or Close ends the call, after
/// some bytes have moved, it succeeds with those bytes and the next one fails.
struct IoResult {
  bool ok = false;
  std::size_t bytes = 0;
  /// What made the call fail, or ended it behind some bytes. Kind None when nothing did.
  LineFailure failure{};
};

/// One open serial line, in the comm API's own terms so that both platforms are mirrors of each other.
///
/// Threads: one thread reads or writes at a time. CancelIo and Close may be called from another thread
/// while a Read or Write is blocked: they wake it first, and nothing is closed under a reader.
class SerialLine {
 public:
  virtual ~SerialLine() = default;

  virtual LineResult GetState(LineState& state) = 0;
  /// Fails, and leaves the line as it was, when the driver refuses any of the four parameters.
  virtual LineResult SetState(const LineState& state) = 0;
  virtual LineResult SetTimeouts(const LineTimeouts& timeouts) = 0;
  /// Drops what waits to be sent and what has been received but not read.
  virtual LineResult Purge() = 0;
  /// Clears a communication error that the driver holds.
  virtual LineResult ClearError() = 0;
  virtual IoResult Read(char* buffer, std::size_t size) = 0;
  virtual IoResult Write(const char* data, std::size_t size) = 0;
  /// Ends a blocked Read or Write, and refuses every later one with LineError::Cancelled until
  /// AllowIo is called.
  virtual void CancelIo() = 0;
  virtual void AllowIo() = 0;
  /// Puts the driver's former state back and closes. Fails when the system reports a failure; the line
  /// is closed all the same. Every operation fails afterwards, with LineError::Disconnected, and AllowIo
  /// changes nothing about that. May wait for queued bytes to go out, for less than a second; drops those
  /// that do not. Returns within a second whatever the driver does.
  virtual LineResult Close() = 0;
  /// Whether the line has died: it was hung up, its device is gone, or another one has its place; once a read
  /// or a write has met that it stays so. May be asked at any time and costs next to nothing; never waits for
  /// a read. False while it is not known, and for a line that was closed.
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
