#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "serial/serial_line.h"

namespace quarn {

/// Does the work, which returns a LineResult, in a thread of its own, and waits for it at most so long.
/// Nothing is returned if it takes longer: the thread then goes on alone, so the work must own all that it
/// uses. Where the system has no thread or memory for this, the work is done here and may take its time.
template <class Work>
std::optional<LineResult> DoWithin(std::chrono::milliseconds longest, const Work& work) {
  struct Outcome {
    std::mutex mutex;
    std::condition_variable known;
    std::optional<LineResult> result;
  };
  std::shared_ptr<Outcome> outcome;
  std::thread thread;
  try {
    outcome = std::make_shared<Outcome>();
    thread = std::thread([outcome, work] {
      LineResult result;
      try {
        result = work();
      } catch (const std::exception&) {
        result = LineFailure{LineError::Other};
      }
      const std::lock_guard guard(outcome->mutex);
      outcome->result = std::move(result);
      outcome->known.notify_all();
    });
  } catch (const std::exception&) {
    return work();
  }
  std::unique_lock guard(outcome->mutex);
  const bool inTime = outcome->known.wait_for(guard, longest, [&] { return outcome->result.has_value(); });
  guard.unlock();
  // Not detached before: on Windows such a thread was seen to vanish before it had run.
  if (!inTime) {
    thread.detach();
    return std::nullopt;
  }
  thread.join();
  return outcome->result;
}

}  // namespace quarn
