#pragma once

#include <QAbstractButton>
#include <QButtonGroup>

namespace quarn {

/// Tab goes to the chosen button of a group and passes over the others, which the arrow keys reach. To be
/// called when the program has chosen; it keeps up with the person by itself. With nothing chosen Tab reaches
/// every one.
inline void LeadTabToTheChosen(const QButtonGroup& group) {
  const QAbstractButton* chosen = group.checkedButton();
  for (QAbstractButton* each : group.buttons()) {
    each->setFocusPolicy(chosen == nullptr || each == chosen ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

}  // namespace quarn
