#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <chrono>
#include <future>
#include <thread>

#include "support/readable_text.h"

namespace quarn {

/// How long a test waits for an event before it fails. Not a measure of speed: a busy computer may be slow.
inline constexpr std::chrono::seconds kPatience{60};

/// Waits until `condition` holds; false if it does not.
template <class Condition>
bool Eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// Runs `work` in a thread of its own.
template <class Work>
auto InThread(Work work) {
  return std::async(std::launch::async, std::move(work));
}

/// Whether work in another thread ends without further help.
template <class Result>
bool Ends(std::future<Result>& work) {
  return work.wait_for(kPatience) == std::future_status::ready;
}

/// Whether work in another thread still runs after a moment. A call that does not block has ended by then.
template <class Result>
bool StillRuns(std::future<Result>& work) {
  return work.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
}

/// Milliseconds that `work` takes.
template <class Work>
std::int64_t MillisecondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const auto taken = std::chrono::steady_clock::now() - start;
  return std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
}

}  // namespace quarn
