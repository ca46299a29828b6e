#pragma once

#include <poll.h>

#include <array>
#include <cerrno>
#include <optional>

#include "serial/read_limits.h"

namespace quarn {

// System calls that a signal does not end: made again, or waited on for the rest of their time.

/// Not for close, which gives the descriptor up in any case.
template <class Call>
auto Uninterrupted(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// A control call on a line.
int ControlLine(int line, unsigned long request, void* argument);

/// The same, for one that may wait and whose wait is meant to be cut short: made again a few times only.
int ControlLineBriefly(int line, unsigned long request, void* argument);

/// Drops what waits in the driver; `queues` is TCIFLUSH, TCOFLUSH or TCIOFLUSH.
int FlushLine(int line, int queues);

/// Waits as ppoll does, until the deadline if there is one.
int PollLine(std::array<pollfd, 2>& polled, std::optional<LineClock::time_point> deadline);

}  // namespace quarn
