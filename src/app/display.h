#pragma once

class QWidget;

namespace quarn {

/// Dots per inch of the screen that shows the window, as the desktop scales it: 96 is 100 per cent.
int WindowDpi(const QWidget& window);

/// Height of the desktop's message font in pixels.
int MessageFontHeight();

/// Dots per inch as a scaling in per cent, rounded to the nearest; 0 dpi is 0.
int ScalingPercent(int dpi);

/// The windows have fixed sizes, made for these scalings: 100, 125, 150 and 175 per cent.
bool IsSupportedScaling(int percent);

}  // namespace quarn
