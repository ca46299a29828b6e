#pragma once

#include <signal.h>
#include <time.h>

#include <chrono>

#include "serial/read_deadline.h"

namespace quarn {

// What a real UART needs, in contrast to a pseudo-terminal: set at open and restored at close.

/// The exclusive mark on a line. It survives its descriptor while another program keeps the line open, so it
/// is always removed, even if the open fails.
class ExclusiveMark {
 public:
  ExclusiveMark() = default;
  ExclusiveMark(ExclusiveMark&& other) noexcept;
  ExclusiveMark(const ExclusiveMark&) = delete;
  ExclusiveMark& operator=(const ExclusiveMark&) = delete;
  ~ExclusiveMark() { Clear(); }

  /// Whether it is set. It does not stop an open by a privileged user, so this must be checked.
  static bool IsSet(int line);
  /// 0, or the error if the driver refuses it. `line` must stay open until Clear.
  int Set(int line);
  void Clear();

 private:
  int m_line = -1;
};

/// Adapters hold bytes back for up to 16 ms to pass on more at once, longer than the shortest silence that
/// ends a response. Many drivers can switch this off; others are left unchanged.
class LowLatency {
 public:
  void Set(int line);
  /// Restores the driver's flag as Set found it; all other settings keep their current values.
  void PutBack(int line);

 private:
  bool m_changed = false;
};

/// Waits until the driver has sent everything, at most until `deadline`, and then drops the rest: if flow
/// control holds the line, closing it would wait for half a minute. True if everything was sent.
bool DrainOutput(int line, LineClock::time_point deadline);

/// While an object exists, no call of this thread blocks for long: a kernel wait that a signal can end is
/// ended after `longest`, and so is each later one. When a line is closed, a driver waits for the bytes in
/// its chip, up to half a minute if flow control holds them.
class WaitLimit {
 public:
  explicit WaitLimit(std::chrono::milliseconds longest);
  ~WaitLimit();
  WaitLimit(const WaitLimit&) = delete;
  WaitLimit& operator=(const WaitLimit&) = delete;

 private:
  timer_t m_timer{};
  bool m_runs = false;
  sigset_t m_formerMask{};
};

/// How many bytes wait to be sent; 0 when the driver does not say.
std::size_t QueuedOutput(int line);

}  // namespace quarn
