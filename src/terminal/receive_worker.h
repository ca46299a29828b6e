#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <mutex>
#include <thread>

#include "serial/port_connection.h"
#include "settings/settings_record.h"
#include "terminal/waitable_flag.h"

namespace quarn {

/// The thread of one transaction: frames the command, purges the line, sends, and performs one blocking read
/// for the whole response. The read ends when the line is silent for its read interval.
class ReceiveWorker {
 public:
  /// Starts at once with copies of settings and command. If the system cannot create a thread, this counts as
  /// a failed read and nothing is sent. `busy` and `resultMutex` must outlive the worker; `connection`'s
  /// transaction fields are written under `resultMutex`.
  ReceiveWorker(const SettingsRecord& settings, PortConnection& connection, WaitableFlag& busy,
                std::mutex& resultMutex);
  /// Cancels the read if it still runs, and waits for the thread.
  ~ReceiveWorker();
  ReceiveWorker(const ReceiveWorker&) = delete;
  ReceiveWorker& operator=(const ReceiveWorker&) = delete;

  /// True when the thread has ended, false when `until` came first.
  bool WaitEnded(std::chrono::steady_clock::time_point until) const { return m_running.WaitClear(until); }
  /// Why the system could not create a thread; empty if it could.
  [[nodiscard]] const QString& WhyNoThread() const { return m_whyNoThread; }
  /// Whether the connection has received a response or the failure of the read.
  [[nodiscard]] bool HasDelivered() const;

 private:
  void Start();
  void Run();
  void SendAndReceive();
  void Deliver(const char* bytes, std::size_t count);
  void DeliverFailure();

  const SettingsRecord m_settings;
  const QByteArray m_command;
  const std::shared_ptr<SerialLine> m_line;
  PortConnection& m_connection;
  WaitableFlag& m_busy;
  std::mutex& m_resultMutex;
  WaitableFlag m_running;
  WaitableFlag m_settling;  ///< set until the pause after a response may be shortened
  bool m_delivered = false;
  QString m_whyNoThread;
  std::thread m_thread;
};

}  // namespace quarn
