#pragma once

#include <atomic>
#include <chrono>
#include <thread>

#include "serial/line_test_support.h"

namespace quarn {

/// While it exists, measures how late this machine wakes a thread.
class LatenessProbe {
 public:
  LatenessProbe() : m_thread([this] { Look(); }) {}
  ~LatenessProbe() { Longest(); }
  LatenessProbe(const LatenessProbe&) = delete;
  LatenessProbe& operator=(const LatenessProbe&) = delete;

  /// Ends the measurement.
  std::chrono::milliseconds Longest() {
    m_enough = true;
    if (m_thread.joinable()) m_thread.join();
    return std::chrono::ceil<std::chrono::milliseconds>(m_longest);
  }

 private:
  using Clock = std::chrono::steady_clock;
  void Look() {
    constexpr std::chrono::milliseconds kStep{2};
    while (!m_enough) {
      const Clock::time_point planned = Clock::now() + kStep;
      std::this_thread::sleep_until(planned);
      m_longest = std::max(m_longest, Clock::now() - planned);
    }
  }

  std::atomic<bool> m_enough = false;
  Clock::duration m_longest{};  ///< the thread's, until it is joined
  std::thread m_thread;
};

/// Milliseconds that `work` takes. A late machine only adds to them: so a try of no more than `limit` counts,
/// and a longer one only if the machine was never late by more than `lateness` in it. `work` returns what to
/// compare.
template <class Work>
std::int64_t MillisecondsWithin(std::int64_t limit, std::chrono::milliseconds lateness, const Work& work) {
  constexpr int kTries = 30;
  for (int attempt = 0; attempt < kTries; ++attempt) {
    LatenessProbe probe;
    const std::int64_t taken = work();
    if (taken <= limit || probe.Longest() <= lateness || testing::Test::HasFatalFailure()) return taken;
  }
  ADD_FAILURE() << "the machine is too busy for this test";
  return -1;
}

/// Milliseconds that `work` takes, from a try in which the machine was never late by more than `lateness`:
/// only then an upper limit says something about the work. What must hold on every machine belongs into
/// `work`.
template <class Work>
std::int64_t MillisecondsWhenCalm(std::chrono::milliseconds lateness, const Work& work) {
  return MillisecondsWithin(-1, lateness, [&work] { return MillisecondsOf(work); });
}

}  // namespace quarn
