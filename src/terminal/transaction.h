#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <mutex>

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

/// Runs transactions on the port of a connection: one command out, one response back, strictly one at a
/// time. A response belongs to the command that it followed: a read that a time-out or ESC left behind
/// goes on until the next transaction starts, which cancels it, waits for it and purges the line first.
///
/// Threads: all calls on the user-interface thread. The worker fills receive buffer, status and count of
/// the connection and only then clears the busy flag.
class TransactionEngine {
 public:
  explicit TransactionEngine(PortConnection& connection);
  ~TransactionEngine();
  TransactionEngine(const TransactionEngine&) = delete;
  TransactionEngine& operator=(const TransactionEngine&) = delete;

  /// Sends connection.command and waits for its response, which is then in connection.response: cleaned
  /// of its framing for Received, as it came otherwise. Returns AlreadyRunning at once while another
  /// call waits.
  ///
  /// A read that failed leaves the receive buffer as the transaction before on the same line left it, and
  /// that is what is looked at: there is no separate report for a failed read.
  TransactionResult RunTransaction(const SettingsRecord& settings, TransactionHost& host);

  /// Clears the busy flag and waits up to 500 ms for a worker that still runs.
  void EndWorker(TransactionHost& host);

  /// Why the last transaction had no thread that could have sent anything; empty when it had one. It ended
  /// as one does whose read failed.
  [[nodiscard]] QString WhyNoThread() const;

  [[nodiscard]] bool IsBusy() const { return m_busy.IsSet(); }
  /// Counts the looks at the ESC key since the program started.
  [[nodiscard]] unsigned PollCounter() const { return m_pollCounter; }

 private:
  TransactionResult WaitForWorker(const SettingsRecord& settings, TransactionHost& host);
  TransactionResult Evaluate(const SettingsRecord& settings);

  PortConnection& m_connection;
  WaitableFlag m_busy;
  std::mutex m_resultMutex;  ///< guards the transaction fields against a read that was left behind
  /// Empties the receive buffer when what it holds has come from another line than the one that is open now.
  /// No worker runs then.
  void ForgetOtherLine();

  std::unique_ptr<ReceiveWorker> m_worker;
  std::weak_ptr<SerialLine> m_answering;  ///< the line of the transaction before
  unsigned m_pollCounter = 0;
};

}  // namespace quarn
