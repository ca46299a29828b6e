#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "serial/serial_line.h"

namespace quarn {

using LineClock = std::chrono::steady_clock;

/// When one read must end, according to the line's time-outs. Pure: the caller passes the time.
class ReadDeadline {
 public:
  /// A read of up to `size` bytes that started at `start`.
  ReadDeadline(const LineTimeouts& timeouts, std::size_t size, LineClock::time_point start);

  /// Bytes arrived at `when`; the silence is measured from here.
  void BytesArrived(LineClock::time_point when);

  /// When the read ends if nothing more arrives; nullopt if it waits without limit.
  [[nodiscard]] std::optional<LineClock::time_point> Time() const;

 private:
  std::optional<std::chrono::milliseconds> m_interval;
  std::optional<LineClock::time_point> m_totalEnd;
  std::optional<LineClock::time_point> m_silenceEnd;
};

/// For a driver that counts the total time from its own call: the time-outs with which a read that begins
/// `now`, when its first byte has come, ends at `totalEnd`. Unchanged without an end.
LineTimeouts RestOf(const LineTimeouts& timeouts, std::optional<LineClock::time_point> totalEnd,
                    LineClock::time_point now);

/// When a write of `size` bytes that started at `start` ends; nullopt if it waits without limit.
std::optional<LineClock::time_point> WriteDeadline(const LineTimeouts& timeouts, std::size_t size,
                                                   LineClock::time_point start);

}  // namespace quarn
