// The dialogs of the Port menu.

#include <QScreen>

#include "app/dialog_placement.h"
#include "app/main_dialog.h"
#include "serial/dialogs/dialog_context.h"
#include "serial/dialogs/port_details_dialog.h"
#include "serial/dialogs/port_number_dialog.h"
#include "serial/dialogs/port_settings_dialog.h"
#include "ui/placement.h"

namespace quarn {
namespace {

void BringToFront(QWidget& window) {
  window.showNormal();
  window.raise();
  window.activateWindow();
}

}  // namespace

DialogContext CQuarnDlg::PortDialogContext() {
  return {m_program.settings,
          m_program.workingSettingsFile,
          m_program.connection,
          m_program.state,
          *m_program.portSource,
          m_program.Environment(),
          m_pause};
}

void CQuarnDlg::OpenPortNumber() {
  if (m_portNumber && m_program.state.open.portNumber) {
    // One that was told to close, and has not looked yet, is wanted again.
    m_program.state.requests.portNumberClose = false;
    BringToFront(*m_portNumber);
    return;
  }
  m_portNumber = new CPortNum(this, PortDialogContext());
  m_portNumber->adjustSize();
  m_portNumber->move(
      PlaceBelow(QRect(pos(), OuterSize(*this)), OuterSize(*m_portNumber), screen()->geometry().size()));
  m_portNumber->show();
}

void CQuarnDlg::OpenDetailedPortList() {
  if (m_program.state.tooManyPorts) {
    m_program.messages->ShowInformationMessage(
        QStringLiteral(": Information"), QString(),
        QStringLiteral("Too many COM ports to display in the detailed list. "),
        QStringLiteral("Select a COM port from the \"COM Port Number\" dialog."));
    return;
  }
  if (m_portDetails && m_program.state.open.detailedPortList) {
    m_program.state.requests.detailedListClose = false;
    BringToFront(*m_portDetails);
    return;
  }
  m_portDetails = new CPortDetails(this, PortDialogContext());
  m_portDetails->show();
}

void CQuarnDlg::OpenPortSettings() {
  if (m_portSettings && m_portSettings->isVisible()) {
    BringToFront(*m_portSettings);
    return;
  }
  m_portSettings = new CPortSettings(this, PortDialogContext());
  m_portSettings->show();
}

}  // namespace quarn
