#pragma once

#include <QPointer>
#include <QWidget>
#include <vector>

class QDialog;

namespace quarn {

// Boxes: what comes up over the program's windows and runs an event loop of its own until it is gone
// (messages, questions, the about box, the choice of a file). Any window may be asked to close in that loop,
// so that no box is the child of one. It stands over the window that is active when it comes up, and outlives
// it. User-interface thread only.

/// The window over which a box that comes up now stands: the active one, else one that can be seen. Null when
/// there is none.
[[nodiscard]] QWidget* WindowForBox();

/// Shows the box, which has no parent, over WindowForBox and returns its result when it is gone. No other
/// window of the program takes input meanwhile; the one under it has the keyboard afterwards, if it is still
/// there.
int RunBox(QDialog& box);

/// Says for as long as it lives that a box stands over `window` (may be null), and thereby over all that this
/// one belongs to or stands over itself.
class BoxOver {
 public:
  explicit BoxOver(QWidget* window);
  ~BoxOver();
  BoxOver(const BoxOver&) = delete;
  BoxOver& operator=(const BoxOver&) = delete;

  /// Whether any box stands over this window.
  [[nodiscard]] static bool IsOver(const QWidget& window);

 private:
  std::vector<QPointer<QWidget>> m_below;
};

}  // namespace quarn
