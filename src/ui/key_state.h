#pragma once

#include <QtGlobal>
#include <optional>

namespace quarn {

/// Whether the system says that a key is down, whoever has the keyboard; nothing where it does not say.
/// `scanCode`: as key events have it; 0 when they had none.
std::optional<bool> IsKeyDown(quint32 scanCode);

}  // namespace quarn
