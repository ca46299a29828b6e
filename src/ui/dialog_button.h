#pragma once

#include <QPushButton>

namespace quarn {

/// A button of a dialog. Some styles draw the default button like the one with the focus; here a line marks
/// the focus on the default button.
class DialogButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quarn
