#pragma once

#include <QString>

namespace quarn {

/// The command being typed: text, insertion point, last command and the blinking caret. Has no edit
/// control behind it. Lives as long as the process, so that it survives closing the window.
///
/// `limit` is the longest command in characters (0: nothing can be typed).
class CommandLine {
 public:
  static constexpr QChar kCursor = u'|';
  /// One blink phase in ticks of 100 ms.
  static constexpr int kBlinkTicks = 5;

  [[nodiscard]] const QString& Text() const { return m_text; }
  /// 0 = before the first character. May stand beyond the text's end after Empty.
  [[nodiscard]] int CursorPos() const { return m_cursorPos; }
  [[nodiscard]] const QString& LastCommand() const { return m_lastCommand; }
  [[nodiscard]] bool IsOverwrite() const { return m_overwrite; }

  void TypeCharacter(QChar character, int limit);
  /// A blank goes to the end of the text, wherever the cursor stands and whatever the limit is.
  void TypeSpace();
  void DeleteAtCursor();
  void Backspace();
  void MoveLeft();
  void MoveRight(int limit);
  void ToggleOverwrite() { m_overwrite = !m_overwrite; }

  /// The CLEAR button: the text goes, the cursor stays where it was.
  void Empty() { m_text.clear(); }
  /// Text and cursor both go.
  void Reset();
  /// F1 to F10: a stored command in place of the text, or behind it.
  void LoadStored(const QString& stored, bool append);
  /// F11.
  void RecallLast();
  /// The printable ASCII characters of `clipboard`, up to the limit, in place of the text.
  void Paste(const QString& clipboard, int limit);
  void SetLastCommand(const QString& command) { m_lastCommand = command; }

  /// So many timer ticks of 100 ms while the window is in the foreground. True when the phase flipped, which
  /// it does at most once.
  bool Tick(int ticks = 1);
  /// At which tick from now on the phase flips; at least 1.
  [[nodiscard]] int TicksToBlink() const { return m_blinkTicks; }
  /// The text with or without the cursor character, as the blink phase says.
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
