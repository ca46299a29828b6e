#pragma once

#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <thread>

#include "serial/serial_line.h"

namespace quarn {

/// Does the work, which returns a LineResult, in a thread of its own, and waits for it at most so long.
/// Nothing is returned if it takes longer: the thread then goes on alone, so the work must own all that it
/// uses. Where the system has no thread or memory for this, the work is done here and may take its time.
template <class Work>
std::optional<LineResult> DoWithin(std::chrono::milliseconds longest, const Work& work) {
  constexpr std::chrono::milliseconds kPoll{1};
  struct Outcome {
    LineResult result;
    std::atomic<bool> isKnown = false;
  };
  const auto end = std::chrono::steady_clock::now() + longest;
  std::shared_ptr<Outcome> outcome;
  std::thread thread;
  try {
    outcome = std::make_shared<Outcome>();
    thread = std::thread([outcome, work] {
      try {
        outcome->result = work();
      } catch (const std::exception&) {
        outcome->result = LineFailure{LineError::Other};
      }
      outcome->isKnown = true;
    });
  } catch (const std::exception&) {
    return work();
  }
  // A condition variable with a time limit is not known to every thread sanitizer.
  while (!outcome->isKnown) {
    if (std::chrono::steady_clock::now() >= end) {
      // Not before: on Windows a detached thread was seen to vanish before it had run.
      thread.detach();
      return std::nullopt;
    }
    std::this_thread::sleep_for(kPoll);
  }
  thread.join();
  return outcome->result;
}

}  // namespace quarn
