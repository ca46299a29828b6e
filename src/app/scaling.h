#pragma once

namespace quarn {

/// Dots per inch as scaling in per cent, rounded to the nearest; 0 dpi gives 0.
int ScalingPercent(int dpi);

/// Whether the fixed window sizes support this scaling: 100, 125, 150 or 175 per cent.
bool IsSupportedScaling(int percent);

}  // namespace quarn
