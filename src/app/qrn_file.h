#pragma once

#include <QString>

#include "base/message_operations.h"

namespace quarn {

inline constexpr int kQrnValid = 0;
inline constexpr int kQrnNotFound = -1;
inline constexpr int kQrnTooLarge = 3;  ///< more than 102400 bytes
inline constexpr int kQrnNoFormat = 4;  ///< ".BEGIN" or ".END" is missing, or the text cannot be read

/// A first look at a configuration file, at its whole text: whether ".BEGIN" and ".END" occur in it,
/// wherever and in whatever order.
[[nodiscard]] int CheckQrnFile(const QString& path);

/// Tells why a check failed; a negative code that nobody gives gets a box without text.
void TellQrnFailure(int code, MessageOperations& messages);

/// The path of a file that passes the check. Nothing, and the reason is shown, for any other.
QString LoadQrnFile(const QString& path, MessageOperations& messages);

}  // namespace quarn
