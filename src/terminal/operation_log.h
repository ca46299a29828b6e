#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace quarn {

inline constexpr int LogLineCapacity = 4000;
inline constexpr int ScreenRowCount = 32;

/// The number of a log line in four characters, padded with blanks on the left; empty if it has more than
/// four digits.
QString FormatLineNumber(int number);

/// The operation log and its view of 32 rows. Lines are 8-bit text, each ending in its own CR (except a last
/// piece that came without one). User-interface thread only; lives as long as the process.
class OperationLog {
 public:
  OperationLog();

  /// Number of lines in use, 0 to 4000.
  [[nodiscard]] int LineCount() const { return m_lineCount; }
  /// Index of the next line; equals LineCount between transactions.
  [[nodiscard]] int WritePos() const { return m_writePos; }
  /// The line shown in row 0.
  [[nodiscard]] int TopLine() const { return m_topLine; }
  /// The number of rows with lines, at most 32.
  [[nodiscard]] int RowsInUse() const { return m_rowsInUse; }
  /// Whether a line has been added since the last clear.
  [[nodiscard]] bool HasContent() const { return m_hasContent; }
  /// A stored line with its CR; `index` below LineCount.
  [[nodiscard]] const QByteArray& Line(int index) const { return m_lines[static_cast<std::size_t>(index)]; }

  /// Called at the start of a transaction. If the log is full, returns false, and nothing may be sent.
  bool BeginTransaction();
  /// Splits `text` after every CR and stores the pieces; those beyond the 4000th are dropped. A text of more
  /// than 8192 characters adds nothing. Afterwards the newest line is visible.
  void AppendLogText(const QByteArray& text);
  /// Empties the log and the view.
  void ResetLog();

  /// Move the view by one line, up to line 1, and down until the last line is in row 0.
  void ScrollLogUp();
  void ScrollLogDown();
  /// The mouse wheel: a negative delta (towards the user) moves down, a positive one up.
  void ScrollByWheel(int delta);

  /// The text of screen row 0 to 31, with the line's CR; empty below the last line. Unless LINE_NUM is "OFF",
  /// the line's number comes first.
  [[nodiscard]] QString RowText(int row, const QString& lineNum) const;
  /// The content of the 32 rows, or of the whole log, for the clipboard: line ends are CR alone.
  [[nodiscard]] QString CopyLogPage(const QString& lineNum) const;
  [[nodiscard]] QString CopyLogAll(const QString& lineNum) const;

 private:
  [[nodiscard]] QString LineText(int index, const QString& lineNum) const;
  [[nodiscard]] QString CopyLines(int first, int count, const QString& lineNum) const;

  std::vector<QByteArray> m_lines;
  int m_lineCount = 0;
  int m_writePos = 0;
  int m_topLine = 0;
  int m_rowsInUse = 0;
  bool m_hasContent = false;
};

}  // namespace quarn
