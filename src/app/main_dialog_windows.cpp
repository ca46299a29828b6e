// The windows that the menu opens; each exists once.

#include <QApplication>
#include <QList>
#include <QScreen>
#include <utility>

#include "app/main_dialog.h"
#include "dialogs/dialog_context.h"
#include "dialogs/serial/detailed_port_list_dialog.h"
#include "dialogs/serial/port_number_dialog.h"
#include "dialogs/serial/port_settings_dialog.h"
#include "dialogs/settings/options.h"
#include "dialogs/terminal/function_key_table_dialog.h"
#include "dialogs/terminal/terminal_screen.h"
#include "ui/box_order.h"
#include "ui/placement.h"

namespace quarn {
namespace {

/// A window that is open comes to the front. False when there is none.
bool ChooseAgain(ModelessWindow* window, bool open) {
  if (window == nullptr || !open) return false;
  window->WantAgain();
  BringToFront(*window);
  return true;
}

QRect PlaceOn(const QRect& screen, const QWidget& window) {
  return {window.pos() - screen.topLeft(), OuterSize(window)};
}

}  // namespace

DialogContext CQuarnDlg::Context() { return m_program.Context(PauseHoldingInput()); }

Pause CQuarnDlg::PauseHoldingInput() {
  return [this](int ms) { m_hold.HoldFor(ms); };
}

void CQuarnDlg::OpenTerminalScreen() {
  if (m_program.state.open.Contains(Window::TerminalScreen)) return;
  // One that was told to close may not have looked yet; where it has to stay it is the one that is wanted.
  if (m_terminalScreen && !m_terminalScreen->close()) {
    m_terminalScreen->WantAgain();
    ShowSwitch();
    m_program.state.requests.refresh.Add(Window::MainDialog);
    return;
  }
  // What was to be sent while there was no command line to be seen is forgotten.
  m_program.state.requests.send = false;
  m_program.state.requests.sendAction = false;
  // Before it is shown, so that nothing typed at once is lost.
  if (std::exchange(m_program.state.requests.clearLog, false)) {
    m_program.commandLine.Reset();
    m_program.log.ResetLog();
  }
  TerminalScreenContext context{
      m_program.settings, m_program.connection,  m_program.state,     m_program.engine,
      m_program.log,      m_program.commandLine, *m_program.messages, m_program.savedTerminalRect};
  context.openFunctionKeyTable = [this] { OpenFunctionKeyTable(); };
  context.openScreenOption = [this] { OpenScreenOption(); };
  m_terminalScreen = new CTerminalScreen(this, context);
  m_terminalScreen->show();
  ShowSwitch();
  m_program.state.requests.refresh.Add(Window::MainDialog);
}

void CQuarnDlg::OpenFunctionKeyTable() {
  if (ChooseAgain(m_functionKeyTable, m_program.state.open.Contains(Window::FunctionKeyTable))) return;
  m_functionKeyTable = new CSetMem(this, {m_program.settings, m_program.workingSettingsFile, m_program.state,
                                          *m_program.messages, m_program.savedFunctionTableRect});
  if (m_program.savedFunctionTableRect.isEmpty()) {
    ShowApart(*m_functionKeyTable);
  } else {
    m_functionKeyTable->show();
  }
  m_program.state.requests.refresh.Add(Window::MainDialog);
}

void CQuarnDlg::OpenPortNumber() {
  if (ChooseAgain(m_portNumber, m_program.state.open.Contains(Window::PortNumber))) return;
  m_portNumber = new CPortNum(this, Context());
  ShowPlaced(*m_portNumber, PlaceBelowOrAbove);
}

void CQuarnDlg::OpenDetailedPortList() {
  if (m_program.connection.portNames.size() > kPortRowCount) {
    m_program.messages->ShowInformationMessage(
        QStringLiteral(": Information"), QString(),
        QStringLiteral("Too many COM ports to display in the detailed list. "),
        QStringLiteral("Select a COM port from the \"COM Port Number\" dialog."));
    return;
  }
  if (ChooseAgain(m_detailedPortList, m_program.state.open.Contains(Window::DetailedPortList))) return;
  m_detailedPortList = new CPortDetails(this, Context());
  ShowApart(*m_detailedPortList);
}

void CQuarnDlg::OpenPortSettings() {
  if (ChooseAgain(m_portSettings, m_program.state.open.Contains(Window::PortSettings))) return;
  m_portSettings = new CPortSettings(this, Context());
  m_portSettings->show();
}

void CQuarnDlg::OpenCommandFormat() {
  if (ChooseAgain(m_commandFormat, m_program.state.open.Contains(Window::CommandFormat))) return;
  m_commandFormat = new CCommandFormat(this, Context());
  ShowPlaced(*m_commandFormat, PlaceBeside);
}

void CQuarnDlg::OpenScreenOption() {
  if (ChooseAgain(m_screenOption, m_program.state.open.Contains(Window::ScreenOption))) return;
  m_screenOption = new CScreenOption(this, Context());
  ShowApart(*m_screenOption);
}

void CQuarnDlg::OpenMainOption() {
  if (ChooseAgain(m_mainOption, m_program.state.open.Contains(Window::MainOption))) return;
  m_mainOption = new CMainOption(this, Context());
  ShowApart(*m_mainOption);
}

// The rules count from the corner of the screen with the main dialog.

void CQuarnDlg::ShowPlaced(PolledDialog& dialog, PlaceRule rule) {
  ShowAt(dialog, [this, &dialog, rule] {
    const QRect screen = this->screen()->geometry();
    return screen.topLeft() + rule(PlaceOn(screen, *this), OuterSize(dialog), screen.size());
  });
}

void CQuarnDlg::ShowApart(PolledDialog& dialog) {
  ShowAt(dialog, [this, &dialog] {
    const QRect screen = this->screen()->geometry();
    QList<QRect> others;
    for (const QWidget* each : QApplication::topLevelWidgets()) {
      const bool isOther = each != this && each != &dialog && each->isVisible() && !each->isMinimized();
      if (isOther) others.append(PlaceOn(screen, *each));
    }
    return screen.topLeft() +
           PlaceOffOthers(PlaceOn(screen, *this), others, OuterSize(dialog), screen.size());
  });
}

void CQuarnDlg::ShowAt(PolledDialog& dialog, std::function<QPoint()> place) {
  dialog.ensurePolished();
  dialog.adjustSize();
  dialog.Put([&dialog, place = std::move(place)] { dialog.move(place()); });
  dialog.show();
}

}  // namespace quarn
