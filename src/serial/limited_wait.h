#pragma once

#include <chrono>
#include <exception>
#include <future>
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
  std::future<LineResult> result;
  std::thread thread;
  try {
    std::packaged_task<LineResult()> task(work);
    result = task.get_future();
    thread = std::thread(std::move(task));
  } catch (const std::exception&) {
    return work();
  }
  // Not detached before: on Windows such a thread was seen to vanish before it had run.
  if (result.wait_for(longest) != std::future_status::ready) {
    thread.detach();
    return std::nullopt;
  }
  thread.join();
  return result.get();
}

}  // namespace quarn
