#pragma once

#include <QAbstractItemView>
#include <QComboBox>

#include "dialogs/port_dialog_fixture.h"
#include "dialogs/serial/port_number_dialog.h"
#include "support/waits.h"

namespace quarn::test {

inline constexpr int kPorts = 1005;
inline constexpr int kSetNumber = 1006;
inline constexpr int kOkNumber = 1001;

inline const QString kApplyChoice = QStringLiteral(
    "yes or no/: Confirmation//Setting has been changed./Is it OK to apply this configuration?");

class PortNumberDialog : public PortDialogTest {
 protected:
  CPortNum& Open() { return Show<CPortNum>(); }
  QComboBox& Ports() { return *Control<QComboBox>(*window, kPorts); }
  QStringList Items() {
    QStringList items;
    for (int i = 0; i < Ports().count(); ++i) items.append(Ports().itemText(i));
    return items;
  }
  /// Picks the item in the open list, as a person does with the mouse.
  void Pick(const QString& item) {
    QTest::mouseClick(&Ports(), Qt::LeftButton);
    QAbstractItemView& view = *Ports().view();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.window(), kLongestWaitMs));
    // For a short time the list treats a release as that of the click that opened it, and stays open.
    EXPECT_TRUE(WaitUntil([&] {
      const QModelIndex index = view.model()->index(Ports().findText(item), 0);
      if (view.isVisible())
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(index).center());
      return !view.isVisible();
    }));
    ASSERT_EQ(Ports().currentText(), item);
  }
};

}  // namespace quarn::test
