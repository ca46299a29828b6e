#pragma once

#include <QStringView>
#include <limits>

namespace quarn {

/// The integer at the start of a text, as the C runtime's _wtoi reads it: blanks (space, tab, line feed,
/// vertical tab, form feed, carriage return), an optional sign, then decimal digits up to the first other
/// character. 0 if there is no digit. A number out of range gives the nearest int.
constexpr int ToInteger(QStringView text) {
  qsizetype at = 0;
  const auto unit = [&] { return at < text.size() ? text[at].unicode() : char16_t{0}; };
  while (unit() == u' ' || (unit() >= u'\t' && unit() <= u'\r')) ++at;
  const bool negative = unit() == u'-';
  if (negative || unit() == u'+') ++at;
  // One more than the largest magnitude: the sum stops growing there, whatever the text's length.
  constexpr long long kBeyond = static_cast<long long>(std::numeric_limits<int>::max()) + 1;
  long long magnitude = 0;
  for (; unit() >= u'0' && unit() <= u'9'; ++at) {
    magnitude = magnitude * 10 + (unit() - u'0');
    if (magnitude > kBeyond) magnitude = kBeyond;
  }
  if (negative) return static_cast<int>(-magnitude);
  return magnitude == kBeyond ? std::numeric_limits<int>::max() : static_cast<int>(magnitude);
}

}  // namespace quarn
