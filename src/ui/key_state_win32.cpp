#include "ui/key_state.h"

namespace quarn {

// What the window procedures are told is enough: a window that loses the keyboard is told so at once.
std::optional<bool> IsKeyDown(quint32 /*scanCode*/) { return std::nullopt; }

}  // namespace quarn
