#pragma once

#include <QClipboard>
#include <QRect>
#include <QString>
#include <array>
#include <optional>

#include "base/message_operations.h"
#include "dialogs/modeless_window.h"
#include "settings/settings_record.h"
#include "terminal/function_key_table.h"
#include "ui/input_hold.h"

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
  QRect& savedWindowRect;  ///< while it is empty, whoever opens the window places it
};

/// Shows the ten stored commands, lets the user edit and save them, and passes one to the Terminal Screen by
/// a request.
class CSetMem final : public ModelessWindow {
 public:
  CSetMem(QWidget* owner, const FunctionKeyTableContext& context);

 protected:
  void Look(int ticks) override;
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
