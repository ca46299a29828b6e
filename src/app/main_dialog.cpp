#include "app/main_dialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <utility>

#include "app/path_display.h"
#include "app/platform.h"
#include "base/printable.h"
#include "dialogs/terminal/function_key_table_dialog.h"
#include "dialogs/terminal/terminal_screen.h"
#include "identity.h"
#include "serial/port_names.h"
#include "ui/box_order.h"
#include "ui/controls.h"
#include "ui/dropped_file.h"
#include "ui/escape_key.h"
#include "ui/pictures.h"
#include "ui/placement.h"
#include "ui/tool_tip.h"
#include "ui/window_system.h"

namespace quarn {
namespace {

constexpr int kSwitchId = 1001;
constexpr int kStatusId = 1075;
constexpr int kHeadingId = 1076;
constexpr QRect kDialogUnits{7, 4, 205, 70};  // margins and size
constexpr int kCornerLogoUnits = 36;

/// The Menu key counts as a key too, whatever event it causes.
bool IsKey(const QEvent& event) {
  if (event.type() == QEvent::ContextMenu) {
    return static_cast<const QContextMenuEvent&>(event).reason() == QContextMenuEvent::Keyboard;
  }
  return event.type() == QEvent::KeyPress || event.type() == QEvent::ShortcutOverride;
}

/// A command may show boxes, which must not open while input is held, or over another box.
bool IsFree() { return !InputHold::IsAnyHolding() && QApplication::activeModalWidget() == nullptr; }

bool EndsDialogs(const QEvent& event) {
  if (event.type() == QEvent::ContextMenu) return false;
  const int key = static_cast<const QKeyEvent&>(event).key();
  return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
}

}  // namespace

CQuarnDlg::CQuarnDlg(Program& program)
    : m_program(program),
      m_chooser(this, *program.messages),
      m_files(program, *this, m_chooser),
      m_monitor(program, *this, PauseHoldingInput()) {
  setObjectName(QStringLiteral("CQuarnDlg"));
  // A program that is open all day is often minimised between two measurements, and some window managers let
  // nobody minimise a dialog.
  setWindowFlags((windowFlags() & ~Qt::WindowType_Mask) | Qt::Window | Qt::WindowMinimizeButtonHint);
  CreateControls();
  CreateMenus();
  UpdateMenuState();
  qApp->installEventFilter(this);
  TakeSystemKeys(*this, [this] { return QApplication::activePopupWidget() == nullptr && PassKeyOn(); });
  EscapeKey::OfProgram().StayInFront();
}

CQuarnDlg::~CQuarnDlg() = default;

void CQuarnDlg::CreateControls() {
  const QRect size = MapDialogUnits(font(), kDialogUnits);
  auto* grid = new QGridLayout(this);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  grid->setContentsMargins(size.x(), size.y(), size.x(), size.y());
  const int logoSide = MapDialogUnits(font(), {0, 0, 0, kCornerLogoUnits}).height();
  grid->setHorizontalSpacing(size.x());
  grid->setVerticalSpacing(0);
  grid->setColumnMinimumWidth(3, logoSide);
  grid->setColumnStretch(2, 1);
  for (const int row : {0, 1, 2}) grid->setRowMinimumHeight(row, (size.height() - 2 * size.y()) / 3);

  auto* heading =
      WithControlId(new QLabel(QStringLiteral("Quarn  :  Serial Port Terminal"), this), kHeadingId);
  QFont bold = font();
  bold.setBold(true);
  heading->setFont(bold);
  heading->setObjectName(QStringLiteral("heading"));
  m_switch = WithControlId(new QPushButton(QStringLiteral("ON"), this), kSwitchId);
  m_switch->setObjectName(QStringLiteral("terminalSwitch"));
  m_switch->setAutoDefault(false);
  connect(m_switch, &QPushButton::clicked, this, [this] {
    if (focusWidget() == m_switch) ToggleTerminalScreen();
  });
  m_status = WithControlId(new QLabel(QStringLiteral("Internal Configuration State"), this), kStatusId);
  m_status->setObjectName(QStringLiteral("status"));
  m_status->setTextFormat(Qt::PlainText);
  // For screen reader users "ON" alone is not clear.
  auto* switchLabel = new QLabel(QStringLiteral("Terminal Screen  ---"), this);
  switchLabel->setBuddy(m_switch);
  m_switch->setAccessibleDescription(QStringLiteral("Terminal Screen"));
  auto* logo = new QLabel(this);
  logo->setObjectName(QStringLiteral("logo"));
  logo->setAccessibleName(QString::fromLatin1(identity::kName));
  logo->setPixmap(Logo({logoSide, logoSide}, devicePixelRatioF()));

  grid->addWidget(heading, 0, 0, 1, 3);
  grid->addWidget(switchLabel, 1, 0);
  grid->addWidget(m_switch, 1, 1, Qt::AlignLeft);
  grid->addWidget(logo, 0, 3, 2, 1, Qt::AlignRight | Qt::AlignVCenter);
  grid->addWidget(m_status, 2, 0, 1, 4);
  // The dialog sets the width, not the status line.
  m_status->setFixedWidth(size.width() - 2 * size.x());
}

void CQuarnDlg::ToggleTerminalScreen() {
  if (!m_program.state.open.Contains(Window::TerminalScreen)) {
    OpenTerminalScreen();
    return;
  }
  m_program.state.open.Remove(Window::TerminalScreen);
  m_program.state.requests.close.Add(Window::TerminalScreen);
  ShowSwitch();
  m_program.state.requests.refresh.Add(Window::MainDialog);
}

void CQuarnDlg::ShowSwitch() {
  m_switch->setText(m_program.state.open.Contains(Window::TerminalScreen) ? QStringLiteral("OFF")
                                                                          : QStringLiteral("ON"));
}

void CQuarnDlg::TakeStartRequest(const QString& file) {
  setWindowState(windowState() & ~Qt::WindowMinimized);
  QWidget* const box = QApplication::activeModalWidget();
  BringToFront(box != nullptr ? *box : *this);
  if (!file.isEmpty()) m_requestedFile = file;
}

int CQuarnDlg::QuietTicks() const {
  // No tick comes meanwhile, and the transaction uses the line.
  if (InputHold::IsAnyHolding()) return TickPlan::kUntilWoken;
  return m_requestedFile.isEmpty() && m_waiting.empty() &&
                 !m_program.state.requests.refresh.Contains(Window::MainDialog) && m_monitor.IsAtRest()
             ? TickPlan::kUntilWoken
             : 0;
}

void CQuarnDlg::OnTick(int ticks) {
  if (m_program.state.requests.refresh.Take(Window::MainDialog)) Refresh();
  m_monitor.Tick(ticks);
  if (!m_requestedFile.isEmpty()) {
    m_waiting.emplace_back(
        [this, file = std::exchange(m_requestedFile, QString())] { m_files.DropFiles({file}); });
  }
  if (m_waiting.empty() || !IsFree()) return;
  // After this tick, as it may show a box.
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (m_waiting.empty() || !IsFree()) return;
        const auto next = std::move(m_waiting.front());
        m_waiting.pop_front();
        next();
      },
      Qt::QueuedConnection);
}

void CQuarnDlg::RunWhenFree(std::function<void()> command) {
  if (IsFree()) {
    command();
  } else {
    m_waiting.push_back(std::move(command));
  }
}

void CQuarnDlg::Refresh() {
  ShowSwitch();
  SetTitle(QString());
  UpdateMenuState();
  ShowUserFile();
}

void CQuarnDlg::SetTitle(const QString& suffix) {
  const QString port = PortTitlePart(m_program.state.currentPortName, m_program.connection.connected.IsSet());
  setWindowTitle(QStringLiteral("Quarn   (") + port + QLatin1Char(')') + suffix);
}

void CQuarnDlg::ShowUserFile() {
  if (m_program.userFile.isEmpty()) {
    m_status->setText(QStringLiteral("[ Internal Configuration State ]"));
    SetPlainToolTip(*m_status, QString());
    return;
  }
  const auto status = [](const QString& path) { return QStringLiteral("( ") + path + QStringLiteral(" )"); };
  const auto fits = [&](const QString& path) {
    return m_status->fontMetrics().horizontalAdvance(status(path)) <= m_status->width();
  };
  // With the system's separators; the file dialogs use others.
  const QString path = Printable(QDir::toNativeSeparators(m_program.userFile));
  m_status->setText(status(ShortenPath(path, fits)));
  // The most important parts of a path are its two ends.
  SetPlainToolTip(*m_status, path, Qt::ElideMiddle);
}

void CQuarnDlg::PlaceByPercent(int xPercent, int yPercent) {
  Put([=, this] { PlaceOnScreenByPercent(*this, xPercent, yPercent); });
}

bool CQuarnDlg::IsForThisWindow(const QObject* receiver) const {
  if (receiver == windowHandle()) return true;
  return receiver->isWidgetType() && static_cast<const QWidget*>(receiver)->window() == this;
}

bool CQuarnDlg::PassKeyOn() {
  const bool isOpen = m_program.state.open.Contains(Window::TerminalScreen);
  if (isOpen) m_program.state.requests.focus = true;
  return isOpen;
}

bool CQuarnDlg::eventFilter(QObject* receiver, QEvent* event) {
  if (!IsKey(*event) || QApplication::activePopupWidget() != nullptr || !IsForThisWindow(receiver)) {
    return false;
  }
  // Neither Enter nor Escape ends the program.
  bool swallow = EndsDialogs(*event);
  if (PassKeyOn()) {
    // Some systems refuse to move the keyboard, so the Terminal Screen gets the key itself.
    if (event->type() == QEvent::KeyPress && m_terminalScreen && !MayPlaceWindows())
      m_terminalScreen->HandleKey(static_cast<const QKeyEvent&>(*event));
    swallow = true;
  }
  if (swallow) event->accept();
  return swallow;
}

void CQuarnDlg::showEvent(QShowEvent* event) {
  PolledDialog::showEvent(event);
  // Qt's option -title is for its first plain window. This one's title says what is going on.
  QTimer::singleShot(0, this, [this] {
    const QString title = windowTitle();
    setWindowTitle(QString());
    setWindowTitle(title);
  });
}

void CQuarnDlg::closeEvent(QCloseEvent* event) {
  if (!m_files.MayExit()) {
    event->ignore();
    return;
  }
  PolledDialog::closeEvent(event);
  if (!event->isAccepted()) return;
  // Ending the program asks every visible window to close; one in edit mode would only refuse.
  if (m_functionKeyTable) m_functionKeyTable->hide();
  QApplication::quit();
}

void CQuarnDlg::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) AcceptAsCopy(*event);
}

void CQuarnDlg::dropEvent(QDropEvent* event) {
  QStringList files;
  for (const QUrl& url : event->mimeData()->urls()) {
    if (url.isLocalFile()) files.append(url.toLocalFile());
  }
  if (files.isEmpty() || !AcceptAsCopy(*event)) return;
  // The other program waits for the end of the drop, so messages come after it.
  QMetaObject::invokeMethod(
      this, [this, files] { RunWhenFree([this, files] { m_files.DropFiles(files); }); },
      Qt::QueuedConnection);
}

}  // namespace quarn
