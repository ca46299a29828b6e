#include "app/scaling.h"

#include <algorithm>
#include <array>

namespace quarn {

int ScalingPercent(int dpi) {
  constexpr double kUnscaledDpi = 96.0;
  constexpr double kWhole = 100.0;
  constexpr double kHalf = 0.5;
  return static_cast<int>(dpi / kUnscaledDpi * kWhole + kHalf);
}

bool IsSupportedScaling(int percent) {
  constexpr std::array kSupported{100, 125, 150, 175};
  return std::find(kSupported.begin(), kSupported.end(), percent) != kSupported.end();
}

}  // namespace quarn
