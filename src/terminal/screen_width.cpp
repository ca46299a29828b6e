#include "terminal/screen_width.h"

#include <algorithm>
#include <array>

namespace quarn {

const ScreenWidth& ScreenWidthOf(const QString& inputMax) {
  static const std::array<ScreenWidth, 3> kWidths = {{
      {QStringLiteral("N"), 48, 48, 60, 460},
      {QStringLiteral("M"), 56, 56, 70, 520},
      {QStringLiteral("W"), 64, 64, 80, 580},
  }};
  static const ScreenWidth kUnknown = {QString(), 0, 48, 60, 535};
  const auto* const found = std::ranges::find(kWidths, inputMax, &ScreenWidth::letter);
  return found == kWidths.end() ? kUnknown : *found;
}

}  // namespace quarn
