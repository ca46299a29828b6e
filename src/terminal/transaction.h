#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>

#include "serial/port_connection.h"
#include "settings/settings_record.h"
#include "terminal/waitable_flag.h"

namespace quarn {

/// How a transaction ended; the numbers are what the shell sees as exit status.
enum class TransactionResult : int {
  Received = 0,
  Timeout = 1,
  InvalidData = 2,  ///< nothing left of the response once the delimiters are removed
  Overflow = 3,     ///< truncated at the limit of COM_BUF
  Aborted = 4,
  AlreadyRunning = -1,
  NotSendable = -2,  ///< the system's 8-bit encoding lacks a character of the command
  LogFull = 255,
};

/// What came of one transaction.
struct TransactionOutcome {
  TransactionResult result = TransactionResult::Received;
  /// What is shown, up to the first NUL: cleaned of its framing for Received, as it came for InvalidData and
  /// Overflow, empty otherwise. After a read that failed it is what the reads before on the same line left.
  QByteArray response{};
  /// Every byte of this transaction's own read as it came, cut at the limit of COM_BUF for a response that is
  /// longer. Empty where no read ended, or where it failed.
  QByteArray raw{};
  /// Bytes that the read brought, less one, also of those that were cut off; this is what an overflow is told
  /// with. -1 where `raw` is empty.
  std::int32_t byteCount = -1;
  /// The read failed. The result does not tell: it is that of the response that is shown.
  bool lineFailed = false;
};

/// What a transaction needs of whoever waits for it. Called on the user-interface thread only.
class TransactionHost {
 public:
  virtual ~TransactionHost() = default;
  /// From BeginWait to EndWait the person's input is held and no timer of a window runs.
  virtual void BeginWait() = 0;
  virtual void EndWait() = 0;
  /// Let windows paint. Called at every poll, about every 10 ms.
  virtual void KeepPainting() = 0;
  /// Show `text` in place of the command line.
  virtual void ShowWaitingText(const QString& text) = 0;
  /// Where the command line's caret stands; negative for none.
  [[nodiscard]] virtual int CaretPosition() const = 0;
  /// Whether the ESC key is down or has been pressed since BeginWait.
  virtual bool EscapePressed() = 0;
};

class ReceiveWorker;
struct Reading;

/// Runs transactions on the port of a connection: one command out, one response back, strictly one at a
/// time. A response belongs to the command that it followed: a read that a time-out or ESC left behind
/// goes on until the next transaction starts, which cancels it, waits for it and purges the line first.
///
/// Threads: all calls on the user-interface thread. The worker delivers what it has read and only then clears
/// the busy flag.
class TransactionEngine {
 public:
  explicit TransactionEngine(const PortConnection& connection);
  ~TransactionEngine();
  TransactionEngine(const TransactionEngine&) = delete;
  TransactionEngine& operator=(const TransactionEngine&) = delete;

  /// Sends `command`, the bytes without their framing, and waits for its response. Returns AlreadyRunning at
  /// once while another call waits.
  ///
  /// After a read that failed, what the reads before on the same line left is looked at in its place, and
  /// gives result and response: no result tells of a failed read.
  TransactionOutcome RunTransaction(const SettingsRecord& settings, TransactionHost& host,
                                    const QByteArray& command);

  /// Clears the busy flag and waits up to 500 ms for a worker that still runs.
  void EndWorker(TransactionHost& host);

  /// Why the last transaction had no thread that could have sent anything; empty when it had one. It ended
  /// as one does whose read failed.
  [[nodiscard]] QString WhyNoThread() const;

  [[nodiscard]] bool IsBusy() const { return m_busy.IsSet(); }
  /// Counts the looks at the ESC key since the program started.
  [[nodiscard]] unsigned PollCounter() const { return m_pollCounter; }

 private:
  TransactionResult WaitForWorker(const SettingsRecord& settings, TransactionHost& host,
                                  const QByteArray& command);
  /// The outcome of a transaction whose read has ended; `reading` has been kept already.
  [[nodiscard]] TransactionOutcome Evaluate(const QString& delimiter, const Reading& reading) const;
  /// Ends the worker of the transaction before, and keeps what a read that was left behind has brought since.
  void EndFormerWorker();
  /// Keeps the bytes of a read that did not fail.
  void Keep(const Reading& reading);
  /// Empties what was kept when that has come from another line than the one that is open now.
  void ForgetOtherLine();

  const PortConnection& m_connection;
  WaitableFlag m_busy;
  std::unique_ptr<ReceiveWorker> m_worker;
  QByteArray m_kept;                      ///< what the last read that did not fail has brought
  std::weak_ptr<SerialLine> m_answering;  ///< the line of the transaction before
  unsigned m_pollCounter = 0;
};

}  // namespace quarn
