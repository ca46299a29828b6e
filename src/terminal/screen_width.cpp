#include "terminal/screen_width.h"

#include <algorithm>
#include <array>

#include "settings/setting_values.h"

namespace quarn {
namespace {

ScreenWidth Width(const SettingValue& length, int button, int window) {
  return {length.text.toString(), length.number, length.number, button, window};
}

}  // namespace

const ScreenWidth& ScreenWidthOf(const QString& inputMax) {
  static const std::array kWidths{Width(values::kNarrow, 60, 460), Width(values::kMedium, 70, 520),
                                  Width(values::kWide, 80, 580)};
  static const ScreenWidth kUnknown = {QString(), 0, values::kNarrow.number, 60, 535};
  const auto* const found = std::ranges::find(kWidths, inputMax, &ScreenWidth::letter);
  return found == kWidths.end() ? kUnknown : *found;
}

}  // namespace quarn
