#include "serial/limited_wait.h"

#include <exception>
#include <future>
#include <memory>
#include <thread>

namespace quarn {

std::optional<LineResult> DoWithin(std::chrono::milliseconds longest,
                                   const std::function<LineResult()>& work) {
  std::future<LineResult> result;
  try {
    const auto task = std::make_shared<std::packaged_task<LineResult()>>(work);
    result = task->get_future();
    std::thread([task] { (*task)(); }).detach();
  } catch (const std::exception&) {
    return work();
  }
  if (result.wait_for(longest) != std::future_status::ready) return std::nullopt;
  return result.get();
}

}  // namespace quarn
