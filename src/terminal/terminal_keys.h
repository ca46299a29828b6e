#pragma once

#include <QString>
#include <Qt>
#include <cstdint>

namespace quarn {

/// The meaning of a key press in the Terminal Screen.
enum class KeyAction : std::uint8_t {
  Default,  ///< default handling of the dialog (Tab, Alt with a letter, ...)
  Swallow,
  Character,  ///< insert the key's character
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

/// `key` is a Qt::Key, `text` the text that the key would type.
KeyCommand ClassifyKey(int key, Qt::KeyboardModifiers modifiers, const QString& text);

}  // namespace quarn
