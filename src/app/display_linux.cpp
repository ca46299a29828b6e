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
  // What the desktop asks for reaches a window partly as larger fonts, partly as larger pixels.
  return static_cast<int>(std::lround(screen->logicalDotsPerInch() * screen->devicePixelRatio()));
}

int MessageFontHeight() { return QFontInfo(QApplication::font("QMessageBox")).pixelSize(); }

}  // namespace quarn
