#include "serial/port_description_linux.h"

#include <algorithm>

namespace quarn {

namespace {

constexpr qsizetype kLongestDescription = 250;

bool IsShown(QChar unit) {
  switch (unit.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return true;
  }
}

/// The text without invisible characters and half surrogate pairs.
QString WithoutInvisible(const QString& text) {
  QString result;
  result.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      result += text[i];
      result += text[++i];
    } else if (!text[i].isSurrogate() && IsShown(text[i])) {
      result += text[i];
    }
  }
  return result.trimmed();
}

/// At most `units` UTF-16 units of the text, without half a character at the end.
QString CutTo(const QString& text, qsizetype units) {
  QString result = text.left(std::max<qsizetype>(units, 0));
  if (!result.isEmpty() && result.back().isHighSurrogate()) {
    result.chop(1);
  }
  return result;
}

}  // namespace

QString DescriptionOf(const DescribedPort& port) {
  QString rest = QStringLiteral(" - ") + WithoutInvisible(port.node);
  if (!port.unavailableReason.isEmpty()) {
    rest += QStringLiteral(", ") + WithoutInvisible(port.unavailableReason);
  }
  const QString bracket = QStringLiteral(" (") + port.name + QLatin1Char(')');
  const qsizetype room = kLongestDescription - bracket.size();
  QString head = CutTo(CutTo(WithoutInvisible(port.product), room - rest.size()) + rest, room);
  // Last, so that no cut or removal can form these four characters again.
  head.replace(QLatin1String("(COM"), QLatin1String("[COM"));
  return head + bracket;
}

}  // namespace quarn
