#pragma once

#include <windows.h>

#include <QTimer>
#include <QWinEventNotifier>
#include <cstdint>
#include <optional>

namespace quarn {

/// Counts the changes of the system's list of device interfaces, in which a port that comes or goes is
/// marked. Each change wakes this thread's event loop. One second without a change counts as one, too: a new
/// name of a port stands elsewhere.
///
/// Threads: only the one that made it, which must have an event loop.
class DeviceWatch {
 public:
  DeviceWatch();
  ~DeviceWatch();
  DeviceWatch(const DeviceWatch&) = delete;
  DeviceWatch& operator=(const DeviceWatch&) = delete;

  /// nullopt if the list cannot be watched.
  [[nodiscard]] std::optional<std::uint64_t> Changes() const;

 private:
  void Await();

  HKEY m_list = nullptr;
  HANDLE m_changed = nullptr;
  bool m_watching = false;
  std::uint64_t m_changes = 0;
  QWinEventNotifier m_notifier;
  QTimer m_timer;
};

}  // namespace quarn
