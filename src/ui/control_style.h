#pragma once

namespace quarn {

/// Makes borders of controls and the mark of the focus visible where the desktop's own style is Qt's
/// "Fusion", which draws them too faint: borders darker than a dark window, and the focus nearly transparent.
/// Other styles stay as they are. Call it once, after the application object is made.
void UseVisibleOutlines();

}  // namespace quarn
