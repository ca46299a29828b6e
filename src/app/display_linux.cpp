#include <QApplication>
#include <QFontInfo>
#include <QScreen>
#include <QWidget>
#include <cmath>

#include "app/display.h"

namespace quarn {

int WindowDpi(const QWidget& window) {
  const QScreen* screen = window.screen();
  if (screen == nullptr) return 0;
  // A desktop scales windows partly by larger fonts, partly by larger pixels.
  return static_cast<int>(std::lround(screen->logicalDotsPerInch() * screen->devicePixelRatio()));
}

int MessageFontHeight() { return QFontInfo(QApplication::font("QMessageBox")).pixelSize(); }

}  // namespace quarn
