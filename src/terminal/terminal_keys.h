#pragma once

#include <QString>
#include <Qt>
#include <cstdint>

namespace quarn {

/// What a key press in the Terminal Screen asks for.
enum class KeyAction : std::uint8_t {
  Default,  ///< not ours: the dialog's own handling (Tab, Alt with a letter, ...)
  Swallow,
  Character,  ///< insert the key's character, then the dialog's own handling
  Send,
  ScrollDown,
  ScrollUp,
  MoveLeft,
  MoveRight,
  Space,
  Delete,
  Backspace,
  LoadStored,  ///< `index` 0 to 9, appended when Ctrl is held
  RecallLast,
  ToggleInsert,
  Copy,
  Cut,
  Clear,
  Paste,
};

struct KeyCommand {
  KeyAction action = KeyAction::Default;
  int index = 0;
};

/// `key` is a Qt::Key, `text` what the key would type.
KeyCommand ClassifyKey(int key, Qt::KeyboardModifiers modifiers, const QString& text);

}  // namespace quarn
