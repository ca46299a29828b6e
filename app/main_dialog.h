#pragma once

#include "app/program.h"
#include "ui/polled_dialog.h"

class QLabel;
class QMenu;
class QPushButton;

namespace quarn {

/// The control window: Terminal Screen switch, status line and menus.
class CQuarnDlg final : public PolledDialog {
 public:
  explicit CQuarnDlg(Program& program);

  /// Shows the Terminal Screen unless it is open.
  void OpenTerminalScreen();
  /// Brings title and controls up to date and starts the 100 ms tick.
  void StartPolling();

 protected:
  void OnTick() override;
  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void CreateMenus();
  void CreateControls();
  void Refresh();
  void ToggleTerminalScreen();

  Program& m_program;
  QPushButton* m_switch = nullptr;
  QLabel* m_status = nullptr;
  QAction* m_terminalAction = nullptr;
};

}  // namespace quarn
