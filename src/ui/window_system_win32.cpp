#include "ui/window_system.h"

namespace quarn {

bool IsOnWayland() { return false; }

bool MayPlaceWindows() { return true; }

}  // namespace quarn
