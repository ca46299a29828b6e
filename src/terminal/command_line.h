#pragma once

#include <QString>

namespace quarn {

/// `text` with its character at `position` replaced; appended if the position is at or beyond the end.
/// `position` must not be negative.
inline QString WithCharacterAt(QString text, int position, QChar character) {
  if (position < text.size()) {
    text[position] = character;
  } else {
    text.append(character);
  }
  return text;
}

/// The command being typed: text, insertion point, last command and the blinking caret. Uses no edit control.
/// Lives as long as the process, so it survives closing the window.
///
/// `limit` is the longest command in characters (0: no input is possible).
class CommandLine {
 public:
  static constexpr QChar kCursor = u'|';
  /// One blink phase in ticks of 100 ms.
  static constexpr int kBlinkTicks = 5;

  [[nodiscard]] const QString& Text() const { return m_text; }
  /// 0 = before the first character. After Empty it may be beyond the end of the text.
  [[nodiscard]] int CursorPos() const { return m_cursorPos; }
  [[nodiscard]] const QString& LastCommand() const { return m_lastCommand; }
  [[nodiscard]] bool IsOverwrite() const { return m_overwrite; }

  void TypeCharacter(QChar character, int limit);
  /// Adds a blank at the end of the text, wherever the cursor is, even beyond the limit.
  void TypeSpace();
  void DeleteAtCursor();
  void Backspace();
  void MoveLeft();
  void MoveRight(int limit);
  void ToggleOverwrite() { m_overwrite = !m_overwrite; }

  /// The CLEAR button: clears the text, the cursor does not move.
  void Empty() { m_text.clear(); }
  /// Clears the text and resets the cursor.
  void Reset();
  /// F1 to F10: replaces the text with a stored command, or appends it.
  void LoadStored(const QString& stored, bool append);
  /// F11.
  void RecallLast();
  /// Replaces the text with the printable ASCII characters of `clipboard`, up to the limit.
  void Paste(const QString& clipboard, int limit);
  void SetLastCommand(const QString& command) { m_lastCommand = command; }

  /// `ticks` timer ticks of 100 ms while the window is in the foreground. Returns true if the phase changed,
  /// at most once.
  bool Tick(int ticks = 1);
  /// The number of ticks until the phase changes; at least 1.
  [[nodiscard]] int TicksToBlink() const { return m_blinkTicks; }
  /// The text with or without the cursor character, depending on the blink phase.
  [[nodiscard]] QString DisplayText() const;

 private:
  void MoveToEnd() { m_cursorPos = static_cast<int>(m_text.size()); }

  QString m_text;
  QString m_lastCommand;
  int m_cursorPos = 0;
  int m_blinkTicks = kBlinkTicks;
  bool m_cursorHidden = false;
  bool m_overwrite = false;
};

}  // namespace quarn
