#pragma once

#include <QString>
#include <QStringView>

namespace quarn {

// Values that several settings have, as the file spells them. Everything compares with these.

inline constexpr QStringView kOn{u"ON", 2};
inline constexpr QStringView kOff{u"OFF", 3};
/// Exact and case-sensitive: anything else is off.
inline bool IsOn(const QString& value) { return value == kOn; }

/// COM_PORT, and the current port's name, when there is no port.
inline constexpr QStringView kNoPort{u"NONE", 4};
inline QString NoPort() { return kNoPort.toString(); }

}  // namespace quarn
