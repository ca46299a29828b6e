#pragma once

#include <poll.h>

#include <array>
#include <cerrno>
#include <optional>

#include "serial/read_deadline.h"

namespace quarn {

// System calls that continue after a signal: repeated, or waiting for the rest of their time.

/// Not for close, which always gives up the descriptor.
template <class Call>
auto RetryOnEintr(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// A control call on a line.
int ControlLine(int line, unsigned long request, void* argument);

/// The same for a call whose wait should be cut short: repeated only a few times.
int ControlLineBriefly(int line, unsigned long request, void* argument);

/// Drops the bytes queued in the driver; `queues` is TCIFLUSH, TCOFLUSH or TCIOFLUSH.
int FlushLine(int line, int queues);

/// Waits like ppoll, until the deadline if there is one.
int PollLine(std::array<pollfd, 2>& polled, std::optional<LineClock::time_point> deadline);

}  // namespace quarn
