#include "terminal/command_line.h"

#include <algorithm>

namespace quarn {

void CommandLine::TypeCharacter(QChar character, int limit) {
  if (limit < m_cursorPos + 1) return;
  if (m_overwrite) {
    m_text = WithCharacterAt(m_text, m_cursorPos, character);
  } else {
    if (m_text.size() >= limit) return;
    m_text.insert(std::min<qsizetype>(m_cursorPos, m_text.size()), character);
  }
  ++m_cursorPos;
}

void CommandLine::TypeSpace() {
  m_text.append(u' ');
  ++m_cursorPos;
}

void CommandLine::DeleteAtCursor() {
  if (m_cursorPos < m_text.size()) m_text.remove(m_cursorPos, 1);
}

void CommandLine::Backspace() {
  if (m_text.isEmpty() || m_cursorPos < 1) return;
  --m_cursorPos;
  DeleteAtCursor();
}

void CommandLine::MoveLeft() {
  if (m_cursorPos > 0) --m_cursorPos;
}

void CommandLine::MoveRight(int limit) {
  if (m_cursorPos < std::min<qsizetype>(limit, m_text.size())) ++m_cursorPos;
}

void CommandLine::Reset() {
  m_text.clear();
  m_cursorPos = 0;
}

void CommandLine::LoadStored(const QString& stored, bool append) {
  m_text = append ? m_text + stored : stored;
  MoveToEnd();
}

void CommandLine::RecallLast() {
  m_text = m_lastCommand;
  MoveToEnd();
}

void CommandLine::Paste(const QString& clipboard, int limit) {
  QString text;
  for (const QChar each : clipboard) {
    if (text.size() >= limit) break;
    if (each >= u' ' && each <= u'~') text.append(each);
  }
  m_text = text;
  MoveToEnd();
}

bool CommandLine::Tick(int ticks) {
  if (ticks < m_blinkTicks) {
    m_blinkTicks -= ticks;
    return false;
  }
  m_blinkTicks = kBlinkTicks;
  m_cursorHidden = !m_cursorHidden;
  return true;
}

QString CommandLine::DisplayText() const {
  return m_cursorHidden ? m_text : WithCharacterAt(m_text, m_cursorPos, kCursor);
}

}  // namespace quarn
