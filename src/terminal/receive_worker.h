#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "serial/serial_line.h"
#include "settings/settings_record.h"
#include "terminal/waitable_flag.h"

namespace quarn {

/// What one read brought.
struct Reading {
  bool failed = false;     ///< the line failed, or there was nothing to read from; all else is empty then
  bool cutOff = false;     ///< the line failed after `bytes`
  bool truncated = false;  ///< more came than the limit of COM_BUF allows, and `bytes` ends at the limit
  std::int32_t byteCount = -1;  ///< bytes that came, less one, also of those that were cut off
  QByteArray bytes{};           ///< as they came, at most 8191
};

/// The reading of a read that brought `count` bytes, cut at the limit of COM_BUF.
Reading ReadingOf(const char* bytes, std::size_t count, const QString& comBuf);

/// The thread of one transaction: frames the command, purges the line, sends, and performs one blocking
/// read, which is the whole response. The read ends when the line falls silent for its read interval.
class ReceiveWorker {
 public:
  /// Starts at once on copies of settings and command; without a line the read fails. Where the system gives
  /// no thread this is a read that has failed, and nothing is sent. `busy` must outlive the worker, which
  /// clears it at its end, after it has delivered.
  ReceiveWorker(const SettingsRecord& settings, QByteArray command, std::shared_ptr<SerialLine> line,
                WaitableFlag& busy);
  /// As End.
  ~ReceiveWorker();
  ReceiveWorker(const ReceiveWorker&) = delete;
  ReceiveWorker& operator=(const ReceiveWorker&) = delete;

  /// Set until the thread has ended.
  [[nodiscard]] const WaitableFlag& Running() const { return m_running; }
  /// Cancels the read if it still runs, and waits for the thread. What it delivers it has delivered then.
  void End();
  /// The system's reason for giving no thread; empty when there is one.
  [[nodiscard]] const QString& WhyNoThread() const { return m_whyNoThread; }
  /// What the read brought, or that it failed; nothing before the read has ended.
  [[nodiscard]] std::optional<Reading> Delivered() const;

 private:
  void Start();
  void Run();
  void SendAndReceive();
  void Deliver(Reading reading);

  const SettingsRecord m_settings;
  const QByteArray m_command;
  const std::shared_ptr<SerialLine> m_line;
  WaitableFlag& m_busy;
  WaitableFlag m_running;
  WaitableFlag m_settling;  ///< set until the pause after a response may be cut short
  mutable std::mutex m_deliveryMutex;
  std::optional<Reading> m_delivered;  ///< guarded by m_deliveryMutex
  QString m_whyNoThread;
  std::thread m_thread;
};

}  // namespace quarn
