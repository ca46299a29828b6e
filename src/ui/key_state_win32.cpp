#include "ui/key_state.h"

namespace quarn {

// The messages to the windows are enough: a window that loses the keyboard is notified at once.
std::optional<bool> IsKeyDown(quint32 /*scanCode*/) { return std::nullopt; }

}  // namespace quarn
