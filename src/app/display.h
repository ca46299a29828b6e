#pragma once

class QWidget;

namespace quarn {

/// Dots per inch of the screen that shows the window, as scaled by the desktop: 96 is 100 per cent.
int WindowDpi(const QWidget& window);

/// Height of the desktop's message font in pixels.
int MessageFontHeight();

/// Dots per inch as scaling in per cent, rounded to the nearest; 0 dpi gives 0.
int ScalingPercent(int dpi);

/// Whether the fixed window sizes support this scaling: 100, 125, 150 or 175 per cent.
bool IsSupportedScaling(int percent);

}  // namespace quarn
