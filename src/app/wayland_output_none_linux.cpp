// For a program that is built without Wayland.

#include "app/wayland_output.h"

namespace quarn {

std::optional<OutputSize> WaylandOutput(const QString& /*name*/) { return std::nullopt; }

}  // namespace quarn
