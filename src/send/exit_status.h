#pragma once

namespace quarn::send {

// In addition to the results of a transaction, 0 to 4.

/// Interrupted before the first command, or while a port was awaited.
inline constexpr int kAborted = 4;
/// The port, the settings or a file could not be opened, or the line failed.
inline constexpr int kFailed = 5;
/// The arguments are wrong, or have a command that cannot be sent.
inline constexpr int kWrongUsage = 64;
/// Standard output could not be written.
inline constexpr int kNotPrinted = 74;

}  // namespace quarn::send
