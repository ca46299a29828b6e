#pragma once

#include <QString>

namespace quarn {

// Values that several settings have, as the file spells them. Everything compares with these.

inline constexpr char16_t kOn[] = u"ON";
inline constexpr char16_t kOff[] = u"OFF";
/// Exact and case-sensitive: anything else is off.
inline bool IsOn(const QString& value) { return value == kOn; }

/// COM_PORT, and the current port's name, when there is no port.
inline constexpr char16_t kNoPort[] = u"NONE";
inline QString NoPort() { return QString::fromUtf16(kNoPort); }

}  // namespace quarn
