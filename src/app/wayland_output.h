#pragma once

#include <QString>
#include <optional>

#include "app/scaling.h"

namespace quarn {

/// What the compositor of this Wayland session says of the output with this name. It is asked on a connection
/// of its own, and waited for. Nothing if there is no such session, or it does not say.
[[nodiscard]] std::optional<OutputSize> WaylandOutput(const QString& name);

}  // namespace quarn
