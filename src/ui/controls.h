#pragma once

#include <QAbstractButton>
#include <QButtonGroup>
#include <QPushButton>

namespace quarn {

/// Every control carries its number as the dynamic property "controlId".
inline constexpr char kControlIdProperty[] = "controlId";

template <typename Widget>
Widget* WithControlId(Widget* widget, int controlId) {
  widget->setProperty(kControlIdProperty, controlId);
  return widget;
}

/// Makes Tab go to the checked button of a group and skip the others, which the arrow keys reach. Call this
/// after the program has checked a button; changes by the user are followed automatically. If none is
/// checked, Tab reaches all.
inline void LeadTabToTheChosen(const QButtonGroup& group) {
  const QAbstractButton* chosen = group.checkedButton();
  for (QAbstractButton* each : group.buttons()) {
    each->setFocusPolicy(chosen == nullptr || each == chosen ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

/// A button of a dialog. Some styles draw the default button like the one with the focus; here a line marks
/// the focus on the default button.
class DialogButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quarn
