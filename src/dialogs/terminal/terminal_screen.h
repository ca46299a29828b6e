#pragma once

#include <QMargins>
#include <QPushButton>
#include <QRect>
#include <array>
#include <functional>
#include <vector>

#include "base/message_operations.h"
#include "dialogs/modeless_window.h"
#include "settings/settings_record.h"
#include "terminal/execute_command.h"
#include "terminal/screen_layout.h"
#include "terminal/terminal_keys.h"
#include "ui/input_hold.h"

class QMenu;

namespace quarn {

class StaticText;

/// The objects that the Terminal Screen uses. All of them outlive the window, so log, command line and the
/// window's last position are kept until it is opened again.
struct TerminalScreenContext {
  SettingsRecord& settings;
  PortConnection& connection;
  SharedState& state;
  TransactionEngine& engine;
  OperationLog& log;
  CommandLine& commandLine;
  MessageOperations& messages;
  QRect& savedWindowRect;
  /// Open the dialogs of its menu, if they are not open. An item whose function is empty is disabled.
  std::function<void()> openFunctionKeyTable = {};
  std::function<void()> openScreenOption = {};
};

/// The window in which commands are typed and the log is read.
class CTerminalScreen final : public ModelessWindow, private TransactionHost {
 public:
  CTerminalScreen(QWidget* owner, const TerminalScreenContext& context);

  /// Counts the Enter presses that were accepted.
  [[nodiscard]] unsigned SendCounter() const { return m_sendCounter; }
  /// The text last put into screen row 0 to 31, its CR included.
  [[nodiscard]] const QString& RowText(int row) const;
  [[nodiscard]] QMenu& ContextMenu() { return *m_menu; }
  /// A key that was typed here, or in a window that hands it on. Whether it means something here.
  bool HandleKey(const QKeyEvent& event);

 protected:
  void Look(int ticks) override;
  [[nodiscard]] bool HasToLook() const override;
  [[nodiscard]] int QuietTicks() const override;
  bool eventFilter(QObject* receiver, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void CreateControls();
  void CreateMenu();
  void ApplyLayout();
  void ApplyWindowSize();
  void ApplyColours();
  void ApplyToolTips();
  void RefreshAll();
  void RefreshTitle();
  void RedrawLogRows();
  void ShowCommandLine();

  void TypeText(const QString& text);
  void LoadStoredCommand(int index, bool append);
  void CopyToClipboard(const QString& text);
  void PasteFromClipboard();
  void PressSend();
  void SendByEnter();
  void SendIfTyped();
  void Transact();
  void ClearAllLogEntries();
  void ResetLog();
  void PerformRequests();
  void TakeFocus();
  void PressButton(const TerminalButton& button);

  [[nodiscard]] bool IsPortOpen() const { return m_context.connection.connected.IsSet(); }
  /// Whether a command can reach a device. If not, shows a message: without a line, or on a lost line that
  /// has not been reported yet, the log would show the response to an earlier command.
  bool CanSend();
  [[nodiscard]] int CommandLimit() const;

  // TransactionHost
  void BeginWait() override { m_hold.Begin(); }
  void EndWait() override { m_hold.End(); }
  bool PaintUntilClear(const WaitableFlag& flag, std::chrono::steady_clock::time_point until) override;
  void ShowWaitingText(const QString& text) override;
  [[nodiscard]] int CaretPosition() const override { return m_context.commandLine.CursorPos(); }
  bool EscapePressed() override;

  TerminalScreenContext m_context;
  InputHold m_hold;
  StaticText* m_prompt = nullptr;
  StaticText* m_commandDisplay = nullptr;
  std::array<StaticText*, ScreenRowCount> m_rows{};
  std::array<QPushButton*, kTerminalButtonCount> m_buttons{};
  QPushButton* m_sendButton = nullptr;
  QMenu* m_menu = nullptr;
  ColourScheme m_scheme = ColourScheme::System;
  QMargins m_frame;
  unsigned m_sendCounter = 0;
};

}  // namespace quarn
