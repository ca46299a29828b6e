#pragma once

#include <chrono>

#include "serial/read_limits.h"

namespace quarn {

// What a real UART needs beyond a pseudo-terminal: each is taken at open and given back at close.

/// The exclusive mark on a line. It outlives the descriptor that set it while another program keeps the line
/// open, so it is taken off again whatever becomes of the open.
class ExclusiveMark {
 public:
  ExclusiveMark() = default;
  ExclusiveMark(ExclusiveMark&& other) noexcept;
  ExclusiveMark(const ExclusiveMark&) = delete;
  ExclusiveMark& operator=(const ExclusiveMark&) = delete;
  ~ExclusiveMark() { Clear(); }

  /// 0, or the error: EBUSY when somebody else has set it, another when the driver does not take it. `line`
  /// must stay open until Clear. The mark does not stop a privileged user's open, so it is asked for first.
  int Set(int line);
  void Clear();

 private:
  int m_line = -1;
};

/// Adapters hold bytes back, up to 16 ms, to hand over more at once; that is longer than the shortest silence
/// that ends a response. Many drivers can be told not to. Those that cannot are left as they are.
class LowLatency {
 public:
  void Set(int line);
  /// Puts the driver's flag back as Set found it; every other setting stays as it is by now.
  void PutBack(int line);

 private:
  bool m_changed = false;
};

/// Waits until the driver has nothing more to send, at most until `deadline`, and drops what is left then:
/// with flow control holding the line, closing it would otherwise wait for half a minute. True when all of it
/// went out.
bool DrainOutput(int line, LineClock::time_point deadline);

/// How many bytes wait to be sent; 0 when the driver does not say.
std::size_t QueuedOutput(int line);

}  // namespace quarn
