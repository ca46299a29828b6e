#include "dialogs/terminal/terminal_font.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetrics>
#include <QStringList>

#include "terminal/screen_layout.h"

namespace quarn {
namespace {

bool Fits(const QFont& font) {
  const QFontMetrics metrics(font);
  return metrics.height() <= kTerminalLineHeight &&
         metrics.horizontalAdvance(QString(kWidestRowCharacters, u'0')) <= kNarrowestRowWidth;
}

/// Consolas, or the system's monospace font, or the first monospace font found.
QFont MonospaceFont() {
  const QString consolas = QStringLiteral("Consolas");
  if (QFontDatabase::hasFamily(consolas)) return {consolas};
  QFont usual = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  if (QFontInfo(usual).fixedPitch()) return usual;
  for (const QString& family : QFontDatabase::families(QFontDatabase::Latin)) {
    if (QFontDatabase::isFixedPitch(family) && QFontDatabase::isSmoothlyScalable(family)) return {family};
  }
  return usual;
}

}  // namespace

QFont TerminalFont() {
  QFont font = MonospaceFont();
  font.setStyleHint(QFont::Monospace);
  font.setWeight(QFont::Normal);
  int pixels = kTerminalLineHeight;
  font.setPixelSize(pixels);
  while (pixels > 1 && !Fits(font)) font.setPixelSize(--pixels);
  return font;
}

}  // namespace quarn
