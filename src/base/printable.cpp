#include "base/printable.h"

namespace quarn {

bool IsPrintable(char32_t character) {
  const QChar::Category category = QChar::category(character);
  return QChar::isPrint(character) && category != QChar::Separator_Line &&
         category != QChar::Separator_Paragraph;
}

QString Printable(QString text) {
  for (QChar& each : text) {
    if (!IsPrintable(each.unicode()) && !each.isSurrogate()) each = u'?';
  }
  return text;
}

}  // namespace quarn
