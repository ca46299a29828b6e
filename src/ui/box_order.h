#pragma once

#include <memory>

class QWidget;

namespace quarn {

/// While it exists, `box` stays in front of the program's other windows, whichever of them is clicked on.
/// User-interface thread only.
class BoxOrder {
 public:
  virtual ~BoxOrder() = default;
};
[[nodiscard]] std::unique_ptr<BoxOrder> KeepInFront(QWidget& box);

/// Call for a window before it is shown. Where nobody can move a window that covers its owner (Wayland), the
/// owner can then come to the front of it.
void LetStandAlone(QWidget& window);

}  // namespace quarn
