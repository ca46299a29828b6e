#include "base/text_lines.h"

#include <algorithm>

#include "base/bounds.h"

namespace quarn {

QStringList SplitTextLines(QStringView text, QChar terminator) {
  QStringList lines;
  qsizetype start = 0;
  while (start < text.size() && lines.size() < kMaxLines) {
    qsizetype end = text.indexOf(terminator, start);
    if (end < 0) end = text.size();
    RequireWithinBounds("line", kMaxLineCharacters, end - start, lines.size() + 1);
    lines.append(text.sliced(start, end - start).toString());
    start = end + 1;
  }
  return lines;
}

void SortTextList(QStringList& list) {
  if (list.size() > kMaxLines) return;
  list.removeAll(QString());
  // QString's own order is the order of code units.
  std::sort(list.begin(), list.end());
}

}  // namespace quarn
