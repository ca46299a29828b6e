#pragma once

#include <QClipboard>
#include <QRect>
#include <QString>
#include <array>
#include <optional>

#include "base/message_operations.h"
#include "dialogs/shared_state.h"
#include "settings/settings_record.h"
#include "terminal/function_key_table.h"
#include "ui/input_hold.h"
#include "ui/polled_dialog.h"

class QBoxLayout;
class QKeyEvent;
class QLineEdit;
class QPushButton;

namespace quarn {

/// The objects that the Function Key Table uses. All of them outlive the window.
struct FunctionKeyTableContext {
  SettingsRecord& settings;
  const QString& workingSettingsFile;
  SharedState& state;
  MessageOperations& messages;
  QRect& savedWindowRect;
};

/// The ten stored commands: shows, edits and saves them, and passes them to the Terminal Screen through its
/// requests. Modeless; deletes itself when closed. It sets and clears its open flag.
class CSetMem final : public PolledDialog {
 public:
  CSetMem(QWidget* owner, const FunctionKeyTableContext& context);

 protected:
  void OnTick(int ticks) override;
  [[nodiscard]] int QuietTicks() const override;
  bool eventFilter(QObject* receiver, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void CreateRows(QBoxLayout& column);
  void CreateButtons(QBoxLayout& column);
  void KeepKeysInTheDialog();
  void ReadFields();
  void ShowTexts();
  void ShowState();

  bool HandleKey(const QKeyEvent& event);
  std::optional<QString> Pasted(QClipboard::Mode mode);
  void PressFunctionButton(int index);
  void RequestStoredCommand(int index);
  void Send();
  void ToggleEditing();
  void Undo();
  void Save();

  FunctionKeyTableContext m_context;
  FunctionKeyTable m_table;
  InputHold m_hold;
  std::array<QPushButton*, kStoredCommandCount> m_keys{};
  std::array<QLineEdit*, kStoredCommandCount> m_fields{};
  QPushButton* m_undo = nullptr;
  QPushButton* m_save = nullptr;
  QPushButton* m_edit = nullptr;
  QPushButton* m_ok = nullptr;
  QPushButton* m_send = nullptr;
};

}  // namespace quarn
