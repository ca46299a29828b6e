#include "terminal/dialogs/terminal_font.h"

#include <QFontDatabase>
#include <QFontMetrics>

#include "terminal/screen_layout.h"

namespace quarn {
namespace {

bool Fits(const QFont& font) {
  const QFontMetrics metrics(font);
  return metrics.height() <= kTerminalLineHeight &&
         metrics.horizontalAdvance(QString(kWidestRowCharacters, u'0')) <= kNarrowestRowWidth;
}

}  // namespace

QFont TerminalFont() {
  const QString consolas = QStringLiteral("Consolas");
  QFont font = QFontDatabase::hasFamily(consolas) ? QFont(consolas)
                                                  : QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setStyleHint(QFont::Monospace);
  font.setWeight(QFont::Normal);
  int pixels = kTerminalLineHeight;
  font.setPixelSize(pixels);
  while (pixels > 1 && !Fits(font)) font.setPixelSize(--pixels);
  return font;
}

}  // namespace quarn
