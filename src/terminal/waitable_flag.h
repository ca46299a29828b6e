#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quarn {

/// A flag that one thread clears and another waits for; the waiter wakes at once. Any thread.
class WaitableFlag {
 public:
  /// Returns false if it was already set.
  bool TrySet() {
    const std::lock_guard guard(m_mutex);
    if (m_set) return false;
    m_set = true;
    return true;
  }
  void Clear() {
    {
      const std::lock_guard guard(m_mutex);
      m_set = false;
    }
    m_cleared.notify_all();
  }
  [[nodiscard]] bool IsSet() const {
    const std::lock_guard guard(m_mutex);
    return m_set;
  }
  /// True when the flag is clear, false when `until` came first.
  bool WaitClear(std::chrono::steady_clock::time_point until) const {
    std::unique_lock lock(m_mutex);
    return m_cleared.wait_until(lock, until, [this] { return !m_set; });
  }

 private:
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_cleared;
  bool m_set = false;
};

}  // namespace quarn
