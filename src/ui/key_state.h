#pragma once

#include <QtGlobal>
#include <optional>

namespace quarn {

/// Whether the system reports the key as down, whoever has the keyboard; nullopt if it cannot say.
/// `scanCode`: as in key events; 0 if they had none.
std::optional<bool> IsKeyDown(quint32 scanCode);

}  // namespace quarn
