#pragma once

#include <chrono>

namespace quarn::send {

/// From now on the first Ctrl+C, or other request to end, is only recorded, so that the line can be restored.
/// A second one ends the program at once.
void NoticeInterruption();
/// Any thread.
[[nodiscard]] bool IsInterrupted();
/// Returns false if it was interrupted before that moment, or is already.
[[nodiscard]] bool SleepUntil(std::chrono::steady_clock::time_point end);

}  // namespace quarn::send
