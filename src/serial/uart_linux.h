#pragma once

#include <signal.h>
#include <time.h>

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

  /// Whether somebody has set it. It does not stop a privileged user's open, so that has to be asked.
  static bool IsSet(int line);
  /// 0, or the error when the driver does not take it. `line` must stay open until Clear.
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

/// While one lives, this thread does not stay in a call for long: a wait in the kernel that a signal ends is
/// ended when `longest` is over, and so is each one after it. A driver that is told to close waits for the
/// bytes in its chip, half a minute where flow control holds them, and asks nobody.
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
