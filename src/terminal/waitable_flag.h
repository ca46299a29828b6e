#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

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
      if (m_whenCleared) m_whenCleared();
    }
    m_cleared.notify_all();
  }
  [[nodiscard]] bool IsSet() const {
    const std::lock_guard guard(m_mutex);
    return m_set;
  }

  /// While it exists, `whenCleared` is called each time the flag is cleared, on the thread that clears it:
  /// for a waiter that waits for other things as well. It must neither block nor use the flag.
  class Watch {
   public:
    Watch(const WaitableFlag& flag, std::function<void()> whenCleared) : m_flag(flag) {
      Exchange(std::move(whenCleared));
    }
    ~Watch() { Exchange(std::move(m_former)); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    void Exchange(std::function<void()> next) {
      const std::lock_guard guard(m_flag.m_mutex);
      m_former = std::exchange(m_flag.m_whenCleared, std::move(next));
    }

    const WaitableFlag& m_flag;
    std::function<void()> m_former;
  };

  /// True when the flag is clear, false when `until` came first.
  bool WaitClear(std::chrono::steady_clock::time_point until) const {
    std::unique_lock lock(m_mutex);
    return m_cleared.wait_until(lock, until, [this] { return !m_set; });
  }

 private:
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_cleared;
  mutable std::function<void()> m_whenCleared;
  bool m_set = false;
};

}  // namespace quarn
