#include "terminal/operation_log.h"

#include <algorithm>

#include "settings/setting_values.h"
#include "terminal/control_bytes.h"
#include "terminal/system_encoding.h"

namespace quarn {
namespace {

constexpr qsizetype kLongestText = 8192;
constexpr qsizetype kNumberWidth = 4;

/// Pieces of `text`, each with its CR; the last perhaps without.
std::vector<QByteArray> SplitAfterCr(const QByteArray& text) {
  std::vector<QByteArray> pieces;
  if (text.size() > kLongestText) return pieces;
  qsizetype start = 0;
  while (start < text.size()) {
    const qsizetype cr = text.indexOf(kCr, start);
    const qsizetype end = cr < 0 ? text.size() : cr + 1;
    pieces.push_back(text.mid(start, end - start));
    start = end;
  }
  return pieces;
}

}  // namespace

QString FormatLineNumber(int number) {
  const QString digits = QString::number(number);
  return digits.size() > kNumberWidth ? QString() : digits.rightJustified(kNumberWidth);
}

OperationLog::OperationLog() : m_lines(LogLineCapacity) {}

bool OperationLog::BeginTransaction() {
  m_writePos = std::min(m_lineCount, LogLineCapacity);
  return m_writePos < LogLineCapacity;
}

void OperationLog::AppendLogText(const QByteArray& text) {
  std::vector<QByteArray> pieces = SplitAfterCr(text);
  m_rowsInUse += static_cast<int>(pieces.size());
  if (m_rowsInUse > ScreenRowCount) {
    m_topLine += m_rowsInUse - ScreenRowCount;
    m_rowsInUse = ScreenRowCount;
  }
  for (QByteArray& piece : pieces) {
    if (m_writePos >= LogLineCapacity) break;
    m_lines[static_cast<std::size_t>(m_writePos++)] = std::move(piece);
    m_hasContent = true;
  }
  m_lineCount = m_writePos;
  if (m_lineCount - m_topLine > ScreenRowCount) m_topLine = m_lineCount - ScreenRowCount;
  // The last line must stay visible, even if lines were dropped or the view was at the very end.
  m_topLine = std::clamp(m_topLine, 0, std::max(m_lineCount - 1, 0));
}

void OperationLog::ResetLog() {
  std::fill_n(m_lines.begin(), m_lineCount, QByteArray());
  m_lineCount = 0;
  m_writePos = 0;
  m_topLine = 0;
  m_rowsInUse = 0;
  m_hasContent = false;
}

void OperationLog::ScrollLogUp() {
  if (m_topLine >= 1) --m_topLine;
}

void OperationLog::ScrollLogDown() {
  if (m_topLine <= m_writePos && m_topLine < m_lineCount - 1) ++m_topLine;
}

void OperationLog::ScrollByWheel(int delta) {
  if (delta < 0) ScrollLogDown();
  if (delta > 0) ScrollLogUp();
}

QString OperationLog::RowText(int row, const QString& lineNum) const {
  const int index = m_topLine + row;
  return index < m_lineCount ? LineText(index, lineNum) : QString();
}

QString OperationLog::CopyLogPage(const QString& lineNum) const {
  return CopyLines(m_topLine, ScreenRowCount, lineNum);
}

QString OperationLog::CopyLogAll(const QString& lineNum) const {
  return CopyLines(0, LogLineCapacity, lineNum);
}

QString OperationLog::LineText(int index, const QString& lineNum) const {
  const QString line = FromSystemEncoding(Line(index)).value_or(QString::fromLatin1(Line(index)));
  return lineNum == kOff ? line : FormatLineNumber(index + 1) + QStringLiteral("|  ") + line;
}

QString OperationLog::CopyLines(int first, int count, const QString& lineNum) const {
  QString text;
  const int end = std::min(first + count, m_lineCount);
  for (int index = first; index < end; ++index) text += LineText(index, lineNum);
  return text;
}

}  // namespace quarn
