#include "ui/contrast.h"

#include <algorithm>
#include <cmath>

namespace quarn {
namespace {

/// The minimum ratio at which text of normal size is readable.
constexpr double kReadable = 4.5;
/// Below this, white has more contrast than black.
constexpr double kDarkBelow = 0.179;

/// Converts an sRGB channel, 0 to 1, to linear light.
double LightOf(float intensity) {
  const auto channel = static_cast<double>(intensity);
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
  return 0.2126 * LightOf(colour.redF()) + 0.7152 * LightOf(colour.greenF()) +
         0.0722 * LightOf(colour.blueF());
}

QColor Mixed(const QColor& colour, const QColor& into, int percent) {
  const auto channel = [percent](int from, int to) { return from + (to - from) * percent / 100; };
  return {channel(colour.red(), into.red()), channel(colour.green(), into.green()),
          channel(colour.blue(), into.blue())};
}

}  // namespace

double ContrastRatio(const QColor& one, const QColor& other) {
  constexpr double kStrayLight = 0.05;
  const auto [darker, lighter] = std::minmax({Luminance(one), Luminance(other)});
  return (lighter + kStrayLight) / (darker + kStrayLight);
}

bool IsDark(const QColor& background) { return Luminance(background) < kDarkBelow; }

QColor ReadableOn(const QColor& background, const QColor& colour) {
  const QColor end = IsDark(background) ? Qt::white : Qt::black;
  for (int percent = 0; percent < 100; ++percent) {
    const QColor mixed = Mixed(colour, end, percent);
    if (ContrastRatio(mixed, background) >= kReadable) return mixed;
  }
  return end;
}

}  // namespace quarn
