#include "ui/usual_frame.h"

namespace quarn {

std::optional<QMargins> FrameOfNewWindows() { return std::nullopt; }

}  // namespace quarn
