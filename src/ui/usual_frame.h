#pragma once

#include <QMargins>
#include <optional>

namespace quarn {

/// The frame that the window system says it will draw around a new window, in logical pixels; nullopt if it
/// does not say so before the window is shown. Takes a tenth of a second at most.
std::optional<QMargins> FrameOfNewWindows();

}  // namespace quarn
