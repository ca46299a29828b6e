#pragma once

namespace quarn::send {

/// From now on the first Ctrl+C, or other request to end, is only recorded, so that the line can be restored.
/// A second one ends the program at once.
void NoticeInterruption();
/// Any thread.
[[nodiscard]] bool IsInterrupted();

}  // namespace quarn::send
