#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace quarn {

/// Decides which ticks a window must wake up for. Tick n is n times 100 ms after the start; a tick with
/// nothing to do is skipped and counted with the next.
class TickPlan {
 public:
  static constexpr int kTickMs = 100;
  /// As a number of quiet ticks: until an event occurs.
  static constexpr int kUntilWoken = std::numeric_limits<int>::max();

  /// `now` here and below: milliseconds since any fixed moment.
  void Start(std::int64_t now) {
    m_start = now;
    m_last = 0;
    m_due.reset();
  }

  /// Plans the next tick, if the next `quiet` ones after the last have nothing to do. Never plans a past
  /// tick, but keeps a planned one that is late: otherwise a loop that is always late would never reach it.
  void Plan(int quiet, std::int64_t now) {
    if (IsLate(now)) return;
    if (quiet == kUntilWoken) {
      m_due.reset();
    } else {
      m_due = std::max(m_last + 1 + quiet, TickAt(now) + 1);
    }
  }

  [[nodiscard]] bool HasDue() const { return m_due.has_value(); }
  /// The time of the planned tick; it may be in the past.
  [[nodiscard]] std::int64_t DueTime() const { return m_start + m_due.value_or(0) * kTickMs; }
  [[nodiscard]] bool IsLate(std::int64_t now) const { return m_due && *m_due <= TickAt(now); }

  /// Call at the planned tick. Returns how many ticks it stands for: itself and the skipped ones before it,
  /// but not those missed because it came late.
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
