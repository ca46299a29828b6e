#include "app/scaling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarn {
namespace {

constexpr std::array kSupported{100, 125, 150, 175};
constexpr int kLargestSubstitute = 150;

}  // namespace

int ScalingPercent(int dpi) {
  constexpr double kUnscaledDpi = 96.0;
  constexpr double kWhole = 100.0;
  constexpr double kHalf = 0.5;
  return static_cast<int>(dpi / kUnscaledDpi * kWhole + kHalf);
}

bool IsSupportedScaling(int percent) {
  return std::find(kSupported.begin(), kSupported.end(), percent) != kSupported.end();
}

int SubstituteScaling(int percent) {
  int substitute = kSupported.front();
  for (const int each : kSupported) {
    if (each <= std::min(percent, kLargestSubstitute)) substitute = each;
  }
  return substitute;
}

double ShownShare(const OutputSize& output) {
  if (output.pixels.isEmpty() || output.logical.isEmpty() || output.wholeScale < 1) return 1;
  // Areas do not depend on how the output is turned, and less on how its logical size was rounded.
  const auto area = [](QSize size) { return double(size.width()) * size.height(); };
  return std::sqrt(area(output.pixels) / area(output.logical)) / output.wholeScale;
}

}  // namespace quarn
