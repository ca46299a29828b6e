#include "send/option_values.h"

#include <algorithm>
#include <cmath>

namespace quarn::send {
namespace {

bool IsDigit(QChar each) { return each >= u'0' && each <= u'9'; }

}  // namespace

std::optional<std::uint32_t> NumberIn(const QString& text, std::uint32_t least, std::uint32_t most) {
  bool isNumber = std::ranges::all_of(text, IsDigit);
  const std::uint32_t number = isNumber ? text.toUInt(&isNumber) : 0;
  if (!isNumber || number < least || number > most) return std::nullopt;
  return number;
}

std::optional<std::chrono::milliseconds> SecondsIn(const QString& text) {
  bool isNumber = !text.isEmpty() && text.count(u'.') <= 1 &&
                  std::ranges::all_of(text, [](QChar each) { return IsDigit(each) || each == u'.'; });
  const double seconds = isNumber ? text.toDouble(&isNumber) : 0;
  constexpr double kMillisecondsPerSecond = 1000;
  const double milliseconds = seconds * kMillisecondsPerSecond;
  if (!isNumber || milliseconds > static_cast<double>(kLongestTime.count())) return std::nullopt;
  return std::chrono::milliseconds(std::llround(milliseconds));
}

std::optional<QString> SettingTextIn(const QString& text, std::span<const SettingValue> values) {
  const auto found = std::ranges::find_if(
      values, [&](const SettingValue& each) { return each.text.compare(text, Qt::CaseInsensitive) == 0; });
  if (found == values.end()) return std::nullopt;
  return found->text.toString();
}

QString Alternatives(std::span<const SettingValue> values) {
  QStringList texts;
  for (const SettingValue& each : values) texts.append(each.text.toString());
  const QString last = texts.takeLast();
  return texts.join(QStringLiteral(", ")) + QStringLiteral(" or ") + last;
}

}  // namespace quarn::send
