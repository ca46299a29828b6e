#pragma once

namespace quarn {

/// Whether the windows are on Wayland, where a program can neither place nor raise a window, nor give it the
/// keyboard; only the compositor does. Call it after QApplication is made.
[[nodiscard]] bool IsOnWayland();

/// Whether windows stand where the program says, and get the keyboard that it gives them. Not on Wayland, and
/// not on sway, which does neither for programs of X11 as well.
[[nodiscard]] bool MayPlaceWindows();

}  // namespace quarn
