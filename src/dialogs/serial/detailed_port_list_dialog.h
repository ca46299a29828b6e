#pragma once

#include <QMargins>
#include <array>

#include "dialogs/serial/port_dialog.h"

class QButtonGroup;
class QLabel;
class QRadioButton;
class QScrollArea;

namespace quarn {

/// Detailed COM Port List: selects the port by its description. One row for each port present; the window's
/// height grows with their number up to the screen's, then the list scrolls.
class CPortDetails final : public PortDialog {
 public:
  CPortDetails(QWidget* owner, const DialogContext& context);

 protected:
  void Look(int ticks) override;
  [[nodiscard]] bool HasToLook() const override;
  void CloseOnRequest() override;
  bool eventFilter(QObject* receiver, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  struct Row {
    QRadioButton* radio = nullptr;
    QLabel* description = nullptr;
  };

  void CreateControls();
  void CreateRow(int index);
  /// Reads the ports again and shows the current one.
  void ShowList();
  /// Selects the current port in the existing rows.
  void ShowCurrentPort();
  void ShowTitle(const QString& status);
  void FillRows();
  void LayOut();
  [[nodiscard]] int ClientHeight(int rowsTop) const;
  void KeepOnScreen();
  /// Checks the row of this port, and unchecks the others.
  void Mark(const QString& port);
  void ShowMarkedRow();
  void ApplySetRule(const QString& port);
  void ClickRow(int index);
  void Connect();
  void Set();
  void PressOk();

  QLabel* m_status = nullptr;
  QScrollArea* m_scroll = nullptr;
  QButtonGroup* m_radios = nullptr;
  std::array<Row, kPortRowCount> m_rows;
  QPushButton* m_set = nullptr;
  QPushButton* m_ok = nullptr;
  QList<Port> m_shown;
  QString m_selected;
  bool m_rowClicked = false;
  QMargins m_frame;
};

}  // namespace quarn
