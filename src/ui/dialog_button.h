#pragma once

#include <QPushButton>

namespace quarn {

/// A button of a dialog. Some styles frame the default button as they frame the one with the focus; here the
/// default button shows the focus by a line of its own.
class DialogButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quarn
