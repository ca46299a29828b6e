#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "serial/serial_line.h"

namespace quarn {

using LineClock = std::chrono::steady_clock;

/// When one read has to end, by the line's time-outs. Pure: it is told what time it is.
class ReadLimits {
 public:
  /// A read of up to `size` bytes called at `start`.
  ReadLimits(const LineTimeouts& timeouts, std::size_t size, LineClock::time_point start);

  /// Bytes have come at `when`: the silence is measured from here.
  void BytesArrived(LineClock::time_point when);

  /// The moment at which the read ends if nothing more comes; nothing when it waits for ever.
  [[nodiscard]] std::optional<LineClock::time_point> Deadline() const;

 private:
  std::optional<std::chrono::milliseconds> m_interval;
  std::optional<LineClock::time_point> m_totalEnd;
  std::optional<LineClock::time_point> m_silenceEnd;
};

/// The moment at which a write of `size` bytes called at `start` ends; nothing when it waits for ever.
std::optional<LineClock::time_point> WriteDeadline(const LineTimeouts& timeouts, std::size_t size,
                                                   LineClock::time_point start);

}  // namespace quarn
