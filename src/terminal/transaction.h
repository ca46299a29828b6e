#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "serial/port_connection.h"
#include "settings/settings_record.h"
#include "terminal/waitable_flag.h"

namespace quarn {

/// How a transaction ended. The numbers from 0 are exit statuses of quarn-send.
enum class TransactionResult : int {
  Received = 0,
  Timeout = 1,
  InvalidData = 2,  ///< the response is empty without its delimiters
  Overflow = 3,     ///< truncated at the limit of COM_BUF
  Aborted = 4,
  AlreadyRunning = -1,
  NotSendable = -2,  ///< the system's 8-bit encoding lacks a character of the command
  LogFull = 255,
};

/// The outcome of one transaction.
struct TransactionOutcome {
  TransactionResult result = TransactionResult::Received;
  /// The response to show, up to the first NUL: without its framing for Received, unchanged for InvalidData
  /// and Overflow, otherwise empty. After a failed read: the bytes that earlier reads on this line left.
  QByteArray response{};
  /// All bytes of this transaction's own read, unchanged, cut at the limit of COM_BUF. Empty if no read
  /// ended, or if it failed.
  QByteArray raw{};
  /// Number of bytes read, minus one, including those cut off. The message about an overflow shows it. -1 if
  /// `raw` is empty.
  std::int32_t byteCount = -1;
  /// The read failed. `result` does not show this: it belongs to `response`.
  bool lineFailed = false;
  /// The line failed after the bytes of `raw`, so there may have been more. `result` does not show this.
  bool cutOff = false;
};

/// What a transaction needs from the window or program that waits for it. User-interface thread only.
class TransactionHost {
 public:
  virtual ~TransactionHost() = default;
  /// From BeginWait to EndWait input is held and no window timer runs.
  virtual void BeginWait() = 0;
  virtual void EndWait() = 0;
  /// Lets windows paint, at least once, until the flag is clear (then true) or `until` comes (then false).
  virtual bool PaintUntilClear(const WaitableFlag& flag, std::chrono::steady_clock::time_point until) = 0;
  /// Shows `text` instead of the command line.
  virtual void ShowWaitingText(const QString& text) = 0;
  /// The position of the command line's caret; negative for none.
  [[nodiscard]] virtual int CaretPosition() const = 0;
  /// Whether the ESC key is down or has been pressed since BeginWait.
  virtual bool EscapePressed() = 0;
};

class ReceiveWorker;
struct Reading;

/// Runs transactions on the port of a connection: one command out, one response back, strictly one at a
/// time. A response belongs to the command before it: a read left behind by a time-out or ESC goes on until
/// the next transaction, which first cancels it, waits for its end and purges the line.
///
/// Threads: all calls on the user-interface thread. The worker stores the bytes read, and then clears the
/// busy flag.
class TransactionEngine {
 public:
  explicit TransactionEngine(const PortConnection& connection);
  ~TransactionEngine();
  TransactionEngine(const TransactionEngine&) = delete;
  TransactionEngine& operator=(const TransactionEngine&) = delete;

  /// From now on a wait ends after this time, whatever the settings say; nullopt: they decide.
  void SetOwnTimeout(std::optional<std::chrono::milliseconds> timeout) { m_ownTimeout = timeout; }

  /// Sends `command`, the bytes without their framing, and waits for its response. Returns AlreadyRunning at
  /// once while another call waits.
  ///
  /// After a failed read, result and response are made from the bytes that earlier reads on the same line
  /// left: no result stands for a failed read.
  TransactionOutcome RunTransaction(const SettingsRecord& settings, TransactionHost& host,
                                    const QByteArray& command);

  /// Clears the busy flag and waits up to 500 ms for a worker that still runs.
  void EndWorker(TransactionHost& host);

  /// Why the last transaction got no thread, and so sent nothing. It ended like one whose read failed. Empty
  /// if it got one.
  [[nodiscard]] QString WhyNoThread() const;

  [[nodiscard]] bool IsBusy() const { return m_busy.IsSet(); }
  /// Counts the checks of the ESC key since the program started.
  [[nodiscard]] unsigned PollCounter() const { return m_pollCounter; }

 private:
  TransactionResult WaitForWorker(const SettingsRecord& settings, TransactionHost& host,
                                  const QByteArray& command);
  /// The outcome of a transaction whose read has ended. `reading` has been stored in m_kept already.
  [[nodiscard]] TransactionOutcome Evaluate(const QString& delimiter, const Reading& reading) const;
  /// Ends the worker of the previous transaction, and keeps the bytes of a read left behind.
  void EndFormerWorker();
  /// Keeps the bytes of a read that succeeded.
  void Keep(const Reading& reading);
  /// Clears the kept bytes if they came from another line than the open one.
  void ForgetOtherLine();

  const PortConnection& m_connection;
  WaitableFlag m_busy;
  std::shared_ptr<ReceiveWorker> m_worker;
  QByteArray m_kept;                      ///< the bytes of the last successful read
  std::weak_ptr<SerialLine> m_answering;  ///< the line of the previous transaction
  std::optional<std::chrono::milliseconds> m_ownTimeout;
  unsigned m_pollCounter = 0;
};

}  // namespace quarn
