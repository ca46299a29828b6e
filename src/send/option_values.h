#pragma once

#include <QString>
#include <QStringList>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "settings/setting_values.h"

namespace quarn::send {

// The values of options, read from text. nullopt: it is none of them.

/// A whole number from `least` to `most`, in decimal digits alone.
std::optional<std::uint32_t> NumberIn(const QString& text, std::uint32_t least, std::uint32_t most);

/// The longest time that an option takes: a million seconds.
inline constexpr std::chrono::milliseconds kLongestTime{1'000'000'000};

/// Seconds with or without a fraction ("2", "0.25"), as the milliseconds nearest to them. No sign, no
/// exponent.
std::optional<std::chrono::milliseconds> SecondsIn(const QString& text);

/// The text of a setting's value, whatever its letters' case.
std::optional<QString> SettingTextIn(const QString& text, std::span<const SettingValue> values);

/// The texts as a message names them: "none, odd or even".
QString Alternatives(std::span<const SettingValue> values);

}  // namespace quarn::send
