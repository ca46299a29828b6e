#pragma once

#include <QRadioButton>

#include "dialogs/port_dialog_fixture.h"
#include "dialogs/serial/detailed_port_list_dialog.h"
#include "support/waits.h"
#include "ui/placement.h"

namespace quarn::test {

inline constexpr int kSetId = 1062;
inline constexpr int kOkId = 1013;
inline constexpr int kStatusId = 1064;

inline QList<int> Range(int first, int last) {
  QList<int> ids;
  for (int id = first; id <= last; ++id) ids.append(id);
  return ids;
}

inline const QList<int> kRadios =
    Range(1031, 1040) + Range(1051, 1061) + QList<int>{1063} + Range(1065, 1067) + Range(1073, 1077);
inline const QList<int> kDescriptions =
    Range(1021, 1030) + Range(1041, 1050) + Range(1068, 1072) + Range(1078, 1082);

class DetailedPortListDialog : public PortDialogTest {
 protected:
  CPortDetails& Open() { return Show<CPortDetails>(); }
  QRadioButton& Radio(int row) { return *Control<QRadioButton>(*window, kRadios[row]); }
  QLabel& Description(int row) { return *Control<QLabel>(*window, kDescriptions[row]); }
  QString Status() { return Control<QLabel>(*window, kStatusId)->text(); }
  /// The window manager reports the frame later.
  bool BecomesHigh(int height) {
    return WaitUntil([&] { return OuterSize(*window).height() == height; });
  }
  int RowsShown() {
    int shown = 0;
    for (int i = 0; i < kPortRowCount; ++i) shown += Radio(i).isVisible() ? 1 : 0;
    return shown;
  }
  QList<int> Checked() {
    QList<int> rows;
    for (int i = 0; i < kPortRowCount; ++i) {
      if (Radio(i).isChecked()) rows.append(i);
    }
    return rows;
  }
  /// Requests a refresh after a list change, and waits until the dialog has handled it.
  void AskForTheList() {
    program.state.requests.refresh.Add(Window::DetailedPortList);
    ASSERT_TRUE(
        WaitUntil([this] { return !program.state.requests.refresh.Contains(Window::DetailedPortList); }));
  }
  void ClickRadio(int row) {
    QTest::mouseClick(&Radio(row), Qt::LeftButton, {}, QPoint(8, Radio(row).height() / 2));
  }
};

}  // namespace quarn::test
