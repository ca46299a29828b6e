// The dialogs of the Option menu, each there once.

#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QWindow>

#include "app/dialog_placement.h"
#include "app/main_dialog.h"
#include "settings/dialogs/command_format.h"
#include "settings/dialogs/main_option.h"
#include "settings/dialogs/screen_option.h"
#include "terminal/dialogs/terminal_screen.h"
#include "ui/placement.h"

namespace quarn {
namespace {

/// Shows the dialog; one that is open already comes to the front instead. True when it is new.
template <typename Dialog>
bool OpenOnce(QPointer<Dialog>& dialog, bool open, QWidget* owner, const DialogContext& context) {
  if (open && dialog) {
    dialog->raise();
    dialog->activateWindow();
    return false;
  }
  dialog = new Dialog(owner, context);
  return true;
}

}  // namespace

DialogContext CQuarnDlg::Context() {
  return {.settings = m_program.settings,
          .workingSettingsFile = m_program.workingSettingsFile,
          .connection = m_program.connection,
          .state = m_program.state,
          .portSource = *m_program.portSource,
          .environment = m_program.Environment(),
          .pause = m_pause};
}

void CQuarnDlg::OpenCommandFormat() {
  if (!OpenOnce(m_commandFormat, m_program.state.open.commandFormat, this, Context())) return;
  m_commandFormat->ensurePolished();
  m_commandFormat->layout()->activate();
  PlaceCommandFormat();
  m_commandFormat->show();
}

void CQuarnDlg::PlaceCommandFormat() {
  const QRect outer(pos(), OuterSize(*this));
  m_commandFormat->move(
      PlaceBeside(outer, OuterSize(*m_commandFormat), QGuiApplication::primaryScreen()->size()));
  m_commandFormatPlaced = m_commandFormat->pos();
}

void CQuarnDlg::PlaceCommandFormatWithFrame() {
  if (!m_commandFormatPlaced) return;
  if (m_commandFormat) {
    const QWindow* window = m_commandFormat->windowHandle();
    if (window == nullptr || window->frameMargins().isNull()) return;
    // Unless somebody has moved it meanwhile.
    if (m_commandFormat->pos() == *m_commandFormatPlaced) PlaceCommandFormat();
  }
  m_commandFormatPlaced.reset();
}

void CQuarnDlg::OpenScreenOption() {
  if (OpenOnce(m_screenOption, m_program.state.open.terminalScreenOption, this, Context())) {
    m_screenOption->show();
  }
}

void CQuarnDlg::OpenMainOption() {
  if (OpenOnce(m_mainOption, m_program.state.open.mainDialogOption, this, Context())) m_mainOption->show();
}

}  // namespace quarn
