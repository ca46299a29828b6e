#include <windows.h>

#include <QWidget>
#include <cstdlib>

#include "app/display.h"

namespace quarn {

int WindowDpi(const QWidget& window) {
  return static_cast<int>(GetDpiForWindow(reinterpret_cast<HWND>(window.effectiveWinId())));
}

int MessageFontHeight() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0) == 0) return 0;
  return std::abs(static_cast<int>(metrics.lfMessageFont.lfHeight));
}

}  // namespace quarn
