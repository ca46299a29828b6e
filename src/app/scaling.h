#pragma once

#include <QSize>

namespace quarn {

/// Dots per inch as scaling in per cent, rounded to the nearest; 0 dpi gives 0.
int ScalingPercent(int dpi);

/// Whether the fixed window sizes support this scaling: 100, 125, 150 or 175 per cent.
bool IsSupportedScaling(int percent);

/// The supported scaling that replaces another one: the next smaller one, but at most 150 per cent, because
/// at 175 few screens have room for the Terminal Screen.
int SubstituteScaling(int percent);

/// How large an output is: in pixels, and as its windows see it. Where these differ by a fraction, such
/// as 1.25, a compositor may tell programs the next whole scale, and shrinks what they draw.
struct OutputSize {
  QSize pixels{};
  QSize logical{};
  int wholeScale = 1;
};

/// How large the windows are that are drawn with the whole scale, as a share of what is drawn: 0.75 for 1.5,
/// which is told as 2. It is 1 if a size is not known.
double ShownShare(const OutputSize& output);

}  // namespace quarn
