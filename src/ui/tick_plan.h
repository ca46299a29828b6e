#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace quarn {

/// Which of a window's ticks it has to wake up for. Tick n is n times 100 ms after the start; one that would
/// find nothing to do is let pass, and counted with the next.
class TickPlan {
 public:
  static constexpr int kTickMs = 100;
  /// As a number of quiet ticks: until something happens.
  static constexpr int kUntilWoken = std::numeric_limits<int>::max();

  /// `now` here and below: milliseconds since any fixed moment.
  void Start(std::int64_t now) {
    m_start = now;
    m_last = 0;
    m_due.reset();
  }

  /// Plans the next tick, given that the next `quiet` ones after the last would find nothing to do. Never one
  /// that has gone by, but one that was planned and is late stays: a loop that is always late would
  /// otherwise never get to it.
  void Plan(int quiet, std::int64_t now) {
    if (IsLate(now)) return;
    if (quiet == kUntilWoken) {
      m_due.reset();
    } else {
      m_due = std::max(m_last + 1 + quiet, TickAt(now) + 1);
    }
  }

  [[nodiscard]] bool HasDue() const { return m_due.has_value(); }
  /// When the planned tick is; it may be over.
  [[nodiscard]] std::int64_t DueTime() const { return m_start + m_due.value_or(0) * kTickMs; }
  [[nodiscard]] bool IsLate(std::int64_t now) const { return m_due && *m_due <= TickAt(now); }

  /// The planned tick is there. How many it stands for: itself and those that were let pass before it. What
  /// was missed because it came late does not count.
  int Take(std::int64_t now) {
    const std::int64_t due = m_due.value_or(m_last + 1);
    const std::int64_t ticks = due - m_last;
    m_last = std::max(due, TickAt(now));  // a timer may fire a little early
    m_due.reset();
    return static_cast<int>(std::min<std::int64_t>(ticks, std::numeric_limits<int>::max()));
  }

 private:
  [[nodiscard]] std::int64_t TickAt(std::int64_t now) const { return (now - m_start) / kTickMs; }

  std::int64_t m_start = 0;
  std::int64_t m_last = 0;
  std::optional<std::int64_t> m_due;
};

}  // namespace quarn
