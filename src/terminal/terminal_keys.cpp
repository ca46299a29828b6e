#include "terminal/terminal_keys.h"

#include <algorithm>
#include <array>

namespace quarn {
namespace {

struct KeyRow {
  int key;
  KeyAction action;
};

/// Keys with the same meaning for all modifiers.
constexpr std::array<KeyRow, 14> kPlainKeys = {{
    {Qt::Key_Return, KeyAction::Send},
    {Qt::Key_Enter, KeyAction::Send},
    {Qt::Key_Down, KeyAction::ScrollDown},
    {Qt::Key_Up, KeyAction::ScrollUp},
    {Qt::Key_Left, KeyAction::MoveLeft},
    {Qt::Key_Right, KeyAction::MoveRight},
    {Qt::Key_Space, KeyAction::Space},
    {Qt::Key_Delete, KeyAction::Delete},
    {Qt::Key_Backspace, KeyAction::Backspace},
    {Qt::Key_Escape, KeyAction::Swallow},
    {Qt::Key_F11, KeyAction::RecallLast},
    {Qt::Key_Insert, KeyAction::ToggleInsert},
    {Qt::Key_Control, KeyAction::Swallow},
    {Qt::Key_AltGr, KeyAction::Default},
}};

constexpr std::array<KeyRow, 4> kControlKeys = {{
    {Qt::Key_C, KeyAction::Copy},
    {Qt::Key_X, KeyAction::Cut},
    {Qt::Key_Z, KeyAction::Clear},
    {Qt::Key_V, KeyAction::Paste},
}};

const KeyRow* Find(const auto& rows, int key) {
  const auto* const found = std::ranges::find(rows, key, &KeyRow::key);
  return found == rows.end() ? nullptr : found;
}

}  // namespace

KeyCommand ClassifyKey(int key, Qt::KeyboardModifiers modifiers, const QString& text) {
  // Alt+F4 closes the window, Alt+Space opens its menu, and the logo key belongs to the desktop.
  const bool alt = modifiers.testFlag(Qt::AltModifier);
  const bool control = modifiers.testFlag(Qt::ControlModifier);
  if ((alt && !control) || modifiers.testFlag(Qt::MetaModifier)) return {};
  if (key >= Qt::Key_F1 && key <= Qt::Key_F10) return {KeyAction::LoadStored, key - Qt::Key_F1};
  if (const KeyRow* row = Find(kPlainKeys, key)) return {row->action};
  const bool printable = !text.isEmpty() && text.front().isPrint();
  // Some keyboards type characters with Ctrl and Alt together.
  if (control && alt && printable) return {KeyAction::Character};
  if (control) {
    const KeyRow* row = Find(kControlKeys, key);
    return {row != nullptr ? row->action : KeyAction::Swallow};
  }
  return {printable ? KeyAction::Character : KeyAction::Default};
}

}  // namespace quarn
