#include "base/printable.h"

namespace quarn {

QString Printable(QString text) {
  for (QChar& each : text) {
    if (!each.isPrint() && !each.isSurrogate()) each = u'?';
  }
  return text;
}

}  // namespace quarn
