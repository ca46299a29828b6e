// How the Terminal Screen handles keys, buttons, menu items and requests.

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QWheelEvent>
#include <algorithm>
#include <optional>
#include <utility>

#include "dialogs/terminal/terminal_screen.h"
#include "settings/setting_values.h"
#include "terminal/screen_layout.h"
#include "ui/clipboard_text.h"
#include "ui/placement.h"
#include "ui/static_text.h"

namespace quarn {
namespace {

bool Take(bool& flag) { return std::exchange(flag, false); }

bool IsControlHeld() { return QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier); }

}  // namespace

int CTerminalScreen::CommandLimit() const { return ScreenWidthOf(m_context.settings.inputMax).commandLimit; }

bool CTerminalScreen::eventFilter(QObject* receiver, QEvent* event) {
  // Keys and composed text belong to the window, whichever of its buttons has the focus.
  switch (event->type()) {
    case QEvent::KeyPress:
      if (HandleKey(static_cast<QKeyEvent&>(*event))) return true;
      break;
    case QEvent::InputMethod:
      inputMethodEvent(static_cast<QInputMethodEvent*>(event));
      return true;
    case QEvent::InputMethodQuery: {
      auto& query = static_cast<QInputMethodQueryEvent&>(*event);
      for (const Qt::InputMethodQuery each : {Qt::ImEnabled, Qt::ImCursorRectangle}) {
        if (query.queries().testFlag(each)) query.setValue(each, inputMethodQuery(each));
      }
      query.accept();
      return true;
    }
    default:
      break;
  }
  return ModelessWindow::eventFilter(receiver, event);
}

void CTerminalScreen::inputMethodEvent(QInputMethodEvent* event) {
  TypeText(event->commitString());
  event->accept();
}

QVariant CTerminalScreen::inputMethodQuery(Qt::InputMethodQuery query) const {
  if (query == Qt::ImEnabled) return true;
  if (query == Qt::ImCursorRectangle) return CommandDisplayRect(m_context.settings);
  return ModelessWindow::inputMethodQuery(query);
}

void CTerminalScreen::TypeText(const QString& text) {
  for (const QChar each : text) {
    if (each == u' ') {
      m_context.commandLine.TypeSpace();
    } else if (each.isPrint()) {
      m_context.commandLine.TypeCharacter(each, CommandLimit());
    }
  }
  ShowCommandLine();
}

void CTerminalScreen::keyPressEvent(QKeyEvent* event) {
  // A key that comes from a button was handled in the event filter. Only the window's own keys are new here.
  const bool own = QApplication::focusWidget() == nullptr || QApplication::focusWidget() == this;
  if (own && HandleKey(*event)) return;
  if (event->key() != Qt::Key_Escape) ModelessWindow::keyPressEvent(event);
}

bool CTerminalScreen::HandleKey(const QKeyEvent& event) {
  CommandLine& line = m_context.commandLine;
  const KeyCommand command = ClassifyKey(event.key(), event.modifiers(), event.text());
  switch (command.action) {
    case KeyAction::Default:
      return false;
    case KeyAction::Swallow:
      return true;
    case KeyAction::Character:
      line.TypeCharacter(event.text().front(), CommandLimit());
      break;
    case KeyAction::Send:
      SendByEnter();
      return true;
    case KeyAction::ScrollDown:
      m_context.log.ScrollLogDown();
      break;
    case KeyAction::ScrollUp:
      m_context.log.ScrollLogUp();
      break;
    case KeyAction::MoveLeft:
      line.MoveLeft();
      break;
    case KeyAction::MoveRight:
      line.MoveRight(CommandLimit());
      break;
    case KeyAction::Space:
      line.TypeSpace();
      break;
    case KeyAction::Delete:
      line.DeleteAtCursor();
      break;
    case KeyAction::Backspace:
      line.Backspace();
      break;
    case KeyAction::LoadStored:
      LoadStoredCommand(command.index, event.modifiers().testFlag(Qt::ControlModifier));
      break;
    case KeyAction::RecallLast:
      line.RecallLast();
      break;
    case KeyAction::ToggleInsert:
      if (!event.isAutoRepeat()) line.ToggleOverwrite();
      RefreshTitle();
      break;
    case KeyAction::Copy:
      CopyToClipboard(line.Text());
      break;
    case KeyAction::Cut:
      CopyToClipboard(line.Text());
      line.Reset();
      break;
    case KeyAction::Clear:
      line.Reset();
      break;
    case KeyAction::Paste:
      PasteFromClipboard();
      break;
  }
  if (command.action == KeyAction::ScrollDown || command.action == KeyAction::ScrollUp) RedrawLogRows();
  ShowCommandLine();
  return true;
}

void CTerminalScreen::LoadStoredCommand(int index, bool append) {
  m_context.commandLine.LoadStored(m_context.settings.mem[static_cast<std::size_t>(index)], append);
  Requests().refresh.Add(Window::TerminalScreen);
  ShowCommandLine();
}

void CTerminalScreen::PressButton(const TerminalButton& button) {
  if (button.controlId == kSendButtonId) {
    PressSend();
  } else if (button.controlId == kClearButtonId) {
    m_context.commandLine.Empty();
    ShowCommandLine();
  } else {
    LoadStoredCommand(button.storedCommand, IsControlHeld());
  }
}

void CTerminalScreen::CopyToClipboard(const QString& text) { QGuiApplication::clipboard()->setText(text); }

void CTerminalScreen::PasteFromClipboard() {
  // Another program may answer late. If it has no text or does not provide it, nothing changes.
  if (m_hold.IsHolding()) return;
  const Busy busy(*this);
  const std::optional<QString> text = ClipboardText(m_hold);
  if (text) m_context.commandLine.Paste(*text, CommandLimit());
}

void CTerminalScreen::SendByEnter() {
  if (m_context.engine.IsBusy()) return;
  ++m_sendCounter;
  PressSend();
}

bool CTerminalScreen::CanSend() {
  const PortHandle& handle = m_context.connection.handle;
  if (IsPortOpen() && handle.IsOpen() && !handle.Line()->IsLost()) return true;
  m_context.messages.ShowErrorMessage(QStringLiteral(": Error"), QString(),
                                      QStringLiteral("COM port is not available."),
                                      QStringLiteral("Check \"Detailed COM Port List\"."));
  return false;
}

void CTerminalScreen::PressSend() {
  const Busy busy(*this);
  if (!CanSend()) return;
  if (m_context.commandLine.Text().isEmpty() && !IsOn(m_context.settings.enblNull)) return;
  Transact();
  if (IsOn(m_context.settings.autoClr)) m_context.commandLine.Reset();
  ShowCommandLine();
}

void CTerminalScreen::SendIfTyped() {
  const Busy busy(*this);
  if (m_context.commandLine.Text().isEmpty()) return;
  // Without a connection the transaction reports that there was no response.
  if (IsPortOpen() && !CanSend()) return;
  Transact();
  ShowCommandLine();
}

void CTerminalScreen::Transact() {
  const ExecuteContext context{m_context.engine, m_context.settings, m_context.log, m_context.commandLine};
  // A copy: the line may change before the answer is logged.
  const QString command = m_context.commandLine.Text();
  const TransactionResult result = ExecuteCommand(context, *this, command).result;
  RedrawLogRows();
  if (result == TransactionResult::Aborted) {
    // Earlier send requests of other windows are dropped like keys typed ahead.
    Requests().send = false;
    Requests().sendAction = false;
  }
  if (result != TransactionResult::LogFull) return;
  m_context.messages.ShowTransientMessage(QStringLiteral("Error: No remaining memory for log buffer"), {});
  TakeFocus();
}

bool CTerminalScreen::PaintUntilClear(const WaitableFlag& flag, std::chrono::steady_clock::time_point until) {
  const WaitableFlag::Watch watch(flag, [this] { m_hold.LookAgain(); });
  return m_hold.WaitUntil([&flag] { return !flag.IsSet(); }, until);
}

bool CTerminalScreen::EscapePressed() {
  if (!m_hold.EscapePressed()) return false;
  m_hold.UseEscape();
  return true;
}

void CTerminalScreen::ClearAllLogEntries() {
  if (m_context.log.WritePos() == 0) return;
  const Busy busy(*this);
  if (m_context.messages.AskConfirmation(QStringLiteral(": Confirmation"),
                                         QStringLiteral("Is it OK to to clear all operation log ?"),
                                         QString(), QString(), AnswerByDefault::Refuse)) {
    ResetLog();
  }
}

void CTerminalScreen::ResetLog() {
  m_context.log.ResetLog();
  RedrawLogRows();
}

void CTerminalScreen::TakeFocus() {
  activateWindow();
  if (ButtonsShown(m_context.settings)) {
    m_sendButton->setFocus();
  } else {
    setFocus();
  }
}

bool CTerminalScreen::HasToLook() const { return FrameOf(*this) != m_frame; }

int CTerminalScreen::QuietTicks() const {
  if (IsBusy()) return TickPlan::kUntilWoken;
  const int untilAsked = ModelessWindow::QuietTicks();
  return isActiveWindow() ? std::min(untilAsked, m_context.commandLine.TicksToBlink() - 1) : untilAsked;
}

void CTerminalScreen::Look(int ticks) {
  const bool foreground = isActiveWindow();
  PerformRequests();
  if (foreground && m_context.commandLine.Tick(ticks)) ShowCommandLine();
  if (FrameOf(*this) != m_frame) ApplyWindowSize();
}

void CTerminalScreen::PerformRequests() {
  WindowRequests& requests = Requests();
  // A box needs the keys and timers that a transaction holds.
  const bool mayTransact = QApplication::activeModalWidget() == nullptr;
  if (Take(requests.focus)) TakeFocus();
  if (Take(requests.clearLog)) {
    m_context.commandLine.Reset();
    ResetLog();
    ShowCommandLine();
  }
  if (mayTransact && Take(requests.sendAction)) PressSend();
  if (IsRefreshTaken()) RefreshAll();
  if (const std::optional<int> index = std::exchange(requests.functionKey, std::nullopt)) {
    LoadStoredCommand(*index, requests.functionKeyCtrl);
  }
  if (mayTransact && Take(requests.send)) SendIfTyped();
}

void CTerminalScreen::wheelEvent(QWheelEvent* event) {
  m_context.log.ScrollByWheel(event->angleDelta().y());
  RedrawLogRows();
  ModelessWindow::wheelEvent(event);
}

void CTerminalScreen::contextMenuEvent(QContextMenuEvent* event) {
  // The menu key gives no pointer position. The menu opens at the log.
  const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
  m_menu->popup(byKey ? m_rows.front()->mapToGlobal(QPoint()) : event->globalPos());
}

}  // namespace quarn
