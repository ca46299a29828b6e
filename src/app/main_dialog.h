#pragma once

#include <QPointer>
#include <deque>
#include <functional>
#include <vector>

#include "app/file_chooser.h"
#include "app/file_commands.h"
#include "app/main_window.h"
#include "app/port_monitor.h"
#include "app/program.h"
#include "dialogs/dialog_context.h"
#include "ui/input_hold.h"
#include "ui/polled_dialog.h"

class QAction;
class QLabel;
class QMenuBar;
class QPushButton;

namespace quarn {

class CCommandFormat;
class CMainOption;
class CPortDetails;
class CPortNum;
class CPortSettings;
class CScreenOption;
class CSetMem;
class CTerminalScreen;

/// The control window: Terminal Screen switch, status line and menus.
class CQuarnDlg final : public PolledDialog, public MainWindow {
 public:
  explicit CQuarnDlg(Program& program);
  ~CQuarnDlg() override;

  [[nodiscard]] PortMonitor& Monitor() { return m_monitor; }
  /// Whether File and Help are on different lines of the menu bar.
  [[nodiscard]] bool MenuBarWraps();
  /// Moves the window to this share of the screen's free space, and again when its frame is known.
  void PlaceByPercent(int xPercent, int yPercent);

  void SetTitle(const QString& suffix) override;
  /// A later start asks for this window, and for a file; empty: none. It is loaded as if it had been dropped,
  /// as soon as no box is open and no command runs.
  void TakeStartRequest(const QString& file);

  void UpdateMenuState() override;
  void ShowUserFile() override;
  void OpenTerminalScreen() override;
  void StartTimer() override { StartTicks(); }
  void StopTimer() override { StopTicks(); }

 protected:
  void OnTick(int ticks) override;
  [[nodiscard]] int QuietTicks() const override;
  bool eventFilter(QObject* receiver, QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  struct MenuItem;
  static const std::vector<MenuItem>& MenuItems();

  /// Now, or after the transaction, the pause or the box that is under way. For what is asked for otherwise
  /// than by keys and clicks in the window, which wait by themselves.
  void RunWhenFree(std::function<void()> command);
  void CreateMenus();
  void CreateControls();
  void Refresh();
  void ToggleTerminalScreen();
  void OpenFunctionKeyTable();
  void OpenPortNumber();
  void OpenDetailedPortList();
  void OpenPortSettings();
  void ShowAbout();
  void OpenCommandFormat();
  void OpenScreenOption();
  void OpenMainOption();
  [[nodiscard]] DialogContext Context();
  [[nodiscard]] Pause PauseHoldingInput();
  void ShowSwitch();

  using PlaceRule = QPoint (*)(const QRect& mainDialog, QSize dialog, QSize screen);
  void ShowPlaced(PolledDialog& dialog, PlaceRule rule);
  /// Where it does not cover the others.
  void ShowApart(PolledDialog& dialog);
  void ShowAt(PolledDialog& dialog, std::function<QPoint()> place);
  [[nodiscard]] bool IsForThisWindow(const QObject* receiver) const;
  /// While the Terminal Screen is open, a key takes the keyboard there. False if it is not.
  bool PassKeyOn();

  Program& m_program;
  FileChooserDialog m_chooser;
  FileCommands m_files;
  PortMonitor m_monitor;
  InputHold m_hold;  ///< during a pause
  QString m_requestedFile;
  std::deque<std::function<void()>> m_waiting;
  QPointer<CTerminalScreen> m_terminalScreen;
  QPointer<CSetMem> m_functionKeyTable;
  QPointer<CCommandFormat> m_commandFormat;
  QPointer<CScreenOption> m_screenOption;
  QPointer<CMainOption> m_mainOption;
  QPointer<CPortNum> m_portNumber;
  QPointer<CPortDetails> m_detailedPortList;
  QPointer<CPortSettings> m_portSettings;
  QMenuBar* m_menuBar = nullptr;
  std::vector<QAction*> m_actions;  ///< as in MenuItems
  QPushButton* m_switch = nullptr;
  QLabel* m_status = nullptr;
};

}  // namespace quarn
