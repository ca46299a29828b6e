#include "app/main_dialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <utility>

#include "identity.h"
#include "terminal/dialogs/terminal_screen.h"
#include "terminal/terminal_title.h"
#include "ui/control.h"
#include "ui/placement.h"

namespace quarn {
namespace {

constexpr int kSwitchId = 1001;
constexpr int kStatusId = 1075;
constexpr int kHeadingId = 1076;
constexpr QRect kDialogUnits{7, 4, 205, 70};

}  // namespace

CQuarnDlg::CQuarnDlg(Program& program) : m_program(program) {
  setObjectName(QStringLiteral("CQuarnDlg"));
  CreateControls();
  CreateMenus();
  Refresh();
}

void CQuarnDlg::CreateControls() {
  const QRect size = MapDialogUnits(font(), kDialogUnits);
  auto* grid = new QGridLayout(this);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  grid->setContentsMargins(size.x(), size.y(), size.x(), size.y());
  grid->setRowMinimumHeight(0, size.height() / 3);
  grid->setRowMinimumHeight(1, size.height() / 3);
  grid->setRowMinimumHeight(2, size.height() / 3);
  grid->setColumnMinimumWidth(0, size.width() / 2 - size.x());
  grid->setColumnMinimumWidth(1, size.width() / 2 - size.x());

  auto* heading =
      WithControlId(new QLabel(QStringLiteral("Quarn  :  Serial Port Terminal"), this), kHeadingId);
  QFont bold = font();
  bold.setBold(true);
  heading->setFont(bold);
  m_switch = WithControlId(new QPushButton(QStringLiteral("ON"), this), kSwitchId);
  m_switch->setObjectName(QStringLiteral("terminalSwitch"));
  m_switch->setAutoDefault(false);
  connect(m_switch, &QPushButton::clicked, this, [this] { ToggleTerminalScreen(); });
  m_status = WithControlId(new QLabel(QStringLiteral("[ Internal Configuration State ]"), this), kStatusId);
  m_status->setTextFormat(Qt::PlainText);

  grid->addWidget(heading, 0, 0, 1, 2);
  grid->addWidget(new QLabel(QStringLiteral("Terminal Screen  ---"), this), 1, 0);
  grid->addWidget(m_switch, 1, 1, Qt::AlignLeft);
  grid->addWidget(m_status, 2, 0, 1, 2);
}

void CQuarnDlg::CreateMenus() {
  auto* bar = new QMenuBar(this);
  QMenu* file = bar->addMenu(QStringLiteral("&File"));
  file->addAction(QStringLiteral("E&xit"), this, [this] { close(); });
  QMenu* tools = bar->addMenu(QStringLiteral("&Tools"));
  m_terminalAction =
      tools->addAction(QStringLiteral("&Terminal Screen"), this, [this] { OpenTerminalScreen(); });
  layout()->setMenuBar(bar);
}

void CQuarnDlg::OpenTerminalScreen() {
  if (std::exchange(m_program.state.open.terminalScreen, true)) return;
  auto* screen = new CTerminalScreen(
      this, {m_program.settings, m_program.connection, m_program.state, m_program.engine, m_program.log,
             m_program.commandLine, *m_program.messages, m_program.savedTerminalRect});
  screen->show();
  m_program.state.requests.mainRefresh = true;
}

void CQuarnDlg::ToggleTerminalScreen() {
  if (!m_program.state.open.terminalScreen) {
    OpenTerminalScreen();
    return;
  }
  m_program.state.requests.terminalClose = true;
}

void CQuarnDlg::StartPolling() {
  Refresh();
  StartTicks();
}

void CQuarnDlg::OnTick() {
  if (std::exchange(m_program.state.requests.mainRefresh, false)) Refresh();
}

void CQuarnDlg::Refresh() {
  const bool open = m_program.state.open.terminalScreen;
  m_switch->setText(open ? QStringLiteral("OFF") : QStringLiteral("ON"));
  m_terminalAction->setEnabled(!open);
  setWindowTitle(QStringLiteral("Quarn   (%1)")
                     .arg(PortTitlePart(m_program.state.currentPortName, m_program.connection.connected)));
}

void CQuarnDlg::keyPressEvent(QKeyEvent* event) {
  // Neither Enter nor Escape ends the program.
  const int key = event->key();
  if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) return;
  PolledDialog::keyPressEvent(event);
}

void CQuarnDlg::closeEvent(QCloseEvent* event) {
  PolledDialog::closeEvent(event);
  if (event->isAccepted()) QApplication::quit();
}

}  // namespace quarn
