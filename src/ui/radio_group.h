#pragma once

#include <QAbstractButton>
#include <QButtonGroup>

namespace quarn {

/// Makes Tab go to the checked button of a group and skip the others, which the arrow keys reach. Call this
/// after the program has checked a button; changes by the user are followed automatically. If none is
/// checked, Tab reaches all.
inline void LeadTabToTheChosen(const QButtonGroup& group) {
  const QAbstractButton* chosen = group.checkedButton();
  for (QAbstractButton* each : group.buttons()) {
    each->setFocusPolicy(chosen == nullptr || each == chosen ? Qt::StrongFocus : Qt::ClickFocus);
  }
}

}  // namespace quarn
