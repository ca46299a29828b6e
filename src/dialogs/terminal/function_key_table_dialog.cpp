#include "dialogs/terminal/function_key_table_dialog.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QValidator>
#include <utility>

#include "settings/settings_load_save.h"
#include "ui/clipboard_text.h"
#include "ui/controls.h"
#include "ui/paste_field.h"
#include "ui/placement.h"

namespace quarn {
namespace {

struct Row {
  int fieldId;
  int buttonId;
};

constexpr std::array<Row, kStoredCommandCount> kRows{{{1082, 1001},
                                                      {1065, 1002},
                                                      {1066, 1003},
                                                      {1067, 1004},
                                                      {1068, 1005},
                                                      {1069, 1006},
                                                      {1078, 1007},
                                                      {1079, 1008},
                                                      {1080, 1009},
                                                      {1081, 1010}}};
constexpr int kUndoId = 1071;
constexpr int kSaveId = 1072;
constexpr int kEditId = 1070;
constexpr int kOkId = 1073;
constexpr int kSendId = 1011;

constexpr int kKeyWidth = 28;         // in dialog units
constexpr int kTextFieldWidth = 212;  // about 50 characters
constexpr int kRowGap = 2;

/// Rejects characters that a stored command cannot have, from any kind of input.
class StoredCommandValidator final : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& position) const override {
    position = static_cast<int>(AsStoredCommand(input.left(position)).size());
    input = AsStoredCommand(input);
    return Acceptable;
  }
};

QLineEdit* CreateField(QWidget* parent, PasteField::Source pasted, int index, int controlId) {
  auto* field = WithControlId(new PasteField(parent, std::move(pasted)), controlId);
  field->setObjectName(QStringLiteral("MEM%1").arg(index));
  field->setAccessibleName(field->objectName());
  field->setAccessibleDescription(QStringLiteral("Stored command of F%1").arg(index + 1));
  return field;
}

/// The commands must be readable, also while they cannot be edited.
void KeepReadable(QLineEdit& field, const QPalette& desktop) {
  QPalette colours = field.palette();
  colours.setColor(QPalette::Disabled, QPalette::Text, desktop.color(QPalette::Active, QPalette::WindowText));
  field.setPalette(colours);
}

QPushButton* CreateButton(QWidget* parent, const QString& text, int controlId, QSize size) {
  auto* button = WithControlId(new QPushButton(text, parent), controlId);
  button->setObjectName(text);
  button->setAutoDefault(false);
  button->setMinimumSize(size);
  return button;
}

}  // namespace

CSetMem::CSetMem(QWidget* owner, const FunctionKeyTableContext& context)
    : ModelessWindow(owner, context.state, Window::FunctionKeyTable, QStringLiteral("CSetMem")),
      m_context(context),
      m_table(context.settings) {
  setWindowTitle(QStringLiteral("Quarn - Function Key Table"));
  Requests().refresh.Remove(Window::FunctionKeyTable);

  const DialogGrid grid(*this);
  auto* column = new QVBoxLayout(this);
  column->setSizeConstraint(QLayout::SetFixedSize);
  const int margin = grid.Width(DialogGrid::kMargin);
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(grid.Height(kRowGap));
  CreateRows(*column);
  column->addSpacing(grid.Height(DialogGrid::kGroupGap - kRowGap));
  CreateButtons(*column);
  KeepKeysInTheDialog();
  ShowTexts();
  ShowState();
  if (!m_context.savedWindowRect.isEmpty()) {
    Put([this, place = m_context.savedWindowRect.topLeft()] { move(place); });
  }
  m_ok->setFocus();
  StartTicks();
}

void CSetMem::CreateRows(QBoxLayout& column) {
  const DialogGrid grid(*this);
  const QSize keySize(grid.WholeWidth(kKeyWidth), grid.WholeHeight(DialogGrid::kRowHeight));
  const auto pasted = [this](QClipboard::Mode mode) { return Pasted(mode); };
  auto* validator = new StoredCommandValidator(this);
  for (int index = 0; index < kStoredCommandCount; ++index) {
    const auto i = static_cast<std::size_t>(index);
    auto* key = CreateButton(this, QStringLiteral("F%1").arg(index + 1), kRows[i].buttonId, keySize);
    connect(key, &QPushButton::clicked, this, [this, index] { PressFunctionButton(index); });
    QLineEdit* field = CreateField(this, pasted, index, kRows[i].fieldId);
    KeepReadable(*field, palette());
    field->setValidator(validator);
    field->setFixedWidth(grid.WholeWidth(kTextFieldWidth));
    field->setMinimumHeight(keySize.height());
    auto* row = new QHBoxLayout;
    row->setSpacing(grid.Width(DialogGrid::kGap));
    row->addWidget(key);
    row->addWidget(field);
    column.addLayout(row);
    m_keys[i] = key;
    m_fields[i] = field;
  }
}

void CSetMem::CreateButtons(QBoxLayout& column) {
  const DialogGrid grid(*this);
  const QSize size(grid.WholeWidth(DialogGrid::kButtonWidth - DialogGrid::kGap),
                   grid.WholeHeight(DialogGrid::kRowHeight));
  auto* row = new QHBoxLayout;
  row->setSpacing(grid.Width(DialogGrid::kGap));
  const auto add = [&](const char* text, int controlId, void (CSetMem::*pressed)()) {
    QPushButton* button = CreateButton(this, QString::fromLatin1(text), controlId, size);
    connect(button, &QPushButton::clicked, this, pressed);
    row->addWidget(button, 1);
    return button;
  };
  m_undo = add("UNDO", kUndoId, &CSetMem::Undo);
  m_save = add("SAVE", kSaveId, &CSetMem::Save);
  m_edit = add("EDIT", kEditId, &CSetMem::ToggleEditing);
  m_ok = CreateButton(this, QStringLiteral("OK"), kOkId, size);
  connect(m_ok, &QPushButton::clicked, this, [this] { close(); });
  row->addWidget(m_ok, 1);
  m_send = add("SEND", kSendId, &CSetMem::Send);
  column.addLayout(row);
}

void CSetMem::KeepKeysInTheDialog() {
  for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);
}

void CSetMem::ReadFields() {
  for (std::size_t i = 0; i < m_fields.size(); ++i) {
    const QString text = m_fields[i]->text();
    // If unchanged, the text stays as in its file, with characters that the field cannot show.
    if (text != AsStoredCommand(m_table.EditText().at(i))) m_table.SetEditText(static_cast<int>(i), text);
  }
}

void CSetMem::ShowTexts() {
  for (std::size_t i = 0; i < m_fields.size(); ++i) {
    const QString& text = m_table.EditText().at(i);
    const int limit = m_table.Limit(static_cast<int>(i));
    // An unchanged field keeps its cursor, which both calls would move.
    if (m_fields[i]->maxLength() != limit) m_fields[i]->setMaxLength(limit);
    if (m_fields[i]->text() == AsStoredCommand(text)) continue;
    m_fields[i]->setText(text);
    m_fields[i]->setCursorPosition(0);
  }
}

void CSetMem::ShowState() {
  const FunctionKeyTable::Enabled enabled = m_table.WhatIsEnabled();
  m_edit->setText(m_table.IsEditing() ? QStringLiteral("ENTER") : QStringLiteral("EDIT"));
  for (QLineEdit* field : m_fields) field->setEnabled(enabled.fields);
  for (QPushButton* key : m_keys) key->setEnabled(enabled.functionKeys);
  m_undo->setEnabled(enabled.undo);
  m_save->setEnabled(enabled.save);
  m_ok->setEnabled(enabled.ok);
  m_send->setEnabled(enabled.send);
}

void CSetMem::changeEvent(QEvent* event) {
  ModelessWindow::changeEvent(event);
  if (event->type() != QEvent::PaletteChange) return;
  for (QLineEdit* field : m_fields) KeepReadable(*field, palette());
}

bool CSetMem::eventFilter(QObject* receiver, QEvent* event) {
  if (event->type() == QEvent::KeyPress && HandleKey(static_cast<QKeyEvent&>(*event))) return true;
  return ModelessWindow::eventFilter(receiver, event);
}

void CSetMem::keyPressEvent(QKeyEvent* event) {
  if (!HandleKey(*event)) ModelessWindow::keyPressEvent(event);
}

std::optional<QString> CSetMem::Pasted(QClipboard::Mode mode) {
  if (m_hold.IsHolding()) return std::nullopt;
  const Busy busy(*this);
  return ClipboardText(m_hold, mode);
}

bool CSetMem::HandleKey(const QKeyEvent& event) {
  // Alt+F4 closes the window; the logo key belongs to the desktop.
  const Qt::KeyboardModifiers modifiers = event.modifiers();
  const bool alt = modifiers.testFlag(Qt::AltModifier) && !modifiers.testFlag(Qt::ControlModifier);
  if (alt || modifiers.testFlag(Qt::MetaModifier)) return false;
  const int key = event.key();
  if (key >= Qt::Key_F1 && key <= Qt::Key_F10) {
    // Uses the Ctrl state of the last button press, not the present one.
    if (!event.isAutoRepeat()) RequestStoredCommand(key - Qt::Key_F1);
    return true;
  }
  if (key == Qt::Key_Return || key == Qt::Key_Enter) {
    // A key held down sends once.
    if (!event.isAutoRepeat() && !m_table.IsEditing()) Requests().send = true;
    return true;
  }
  return key == Qt::Key_Escape;
}

void CSetMem::RequestStoredCommand(int index) { Requests().functionKey = index; }

void CSetMem::PressFunctionButton(int index) {
  RequestStoredCommand(index);
  Requests().functionKeyCtrl = QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier);
  if (State().open.Contains(Window::TerminalScreen)) Requests().focus = true;
}

void CSetMem::Send() {
  if (!State().open.Contains(Window::TerminalScreen)) return;
  Requests().sendAction = true;
  Requests().focus = true;
}

void CSetMem::ToggleEditing() {
  if (m_table.IsEditing()) {
    ReadFields();
    m_table.FinishEditing();
    // Show a long command from its start.
    for (QLineEdit* field : m_fields) field->setCursorPosition(0);
    Requests().refresh.Add(Window::TerminalScreen);
  } else {
    m_table.StartEditing();
  }
  ShowTexts();
  ShowState();
}

void CSetMem::Undo() {
  const Busy busy(*this);
  ReadFields();
  if (!m_table.CanUndo()) return;
  if (!m_context.messages.AskSimple(QStringLiteral("OK to discard the updated data ?"),
                                    AnswerByDefault::Refuse)) {
    return;
  }
  m_table.Undo();
  Requests().refresh.Add(Window::TerminalScreen);
  ShowTexts();
  ShowState();
}

void CSetMem::Save() {
  const Busy busy(*this);
  if (!m_table.CanSave()) return;
  if (!m_context.messages.AskSimpleYesNo(QStringLiteral("Is it OK to save the updated data ?"))) return;
  if (!m_table.Save(m_context.workingSettingsFile)) TellSettingsTooLong(m_context.messages);
  ShowState();  // saved commands need neither SAVE nor UNDO
}

void CSetMem::Look(int /*ticks*/) {
  if (!IsRefreshTaken()) return;
  m_table.Reload();
  ShowTexts();
  ShowState();
}

void CSetMem::closeEvent(QCloseEvent* event) {
  if (m_table.IsEditing()) {
    event->ignore();
    const Busy busy(*this);
    m_context.messages.ShowInformationMessage(QStringLiteral(": Warning"),
                                              QStringLiteral("Quit \"EDIT\" mode to close this dialog."),
                                              QString(), QString());
    return;
  }
  m_context.savedWindowRect = frameGeometry();
  MarkClosed();
  Requests().refresh.Add(Window::MainDialog);  // its menu item can be chosen again
  ModelessWindow::closeEvent(event);
}

}  // namespace quarn
