#include "ui/showable_text.h"

#include <QFontMetrics>
#include <QList>
#include <algorithm>

namespace quarn {

bool CanShow(const QFont& font, const QString& text) {
  const QFontMetrics metrics(font);
  const QList<uint> characters = text.toUcs4();
  return std::ranges::all_of(characters, [&](uint each) { return metrics.inFontUcs4(each); });
}

}  // namespace quarn
