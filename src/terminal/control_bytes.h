#pragma once

// The control bytes of ASCII that frame commands and end lines.

namespace quarn {

inline constexpr char kStx = 0x02;  ///< start of text
inline constexpr char kEtx = 0x03;  ///< end of text
inline constexpr char kLf = 0x0A;   ///< line feed
inline constexpr char kCr = 0x0D;   ///< carriage return; ends each line of the log

}  // namespace quarn
