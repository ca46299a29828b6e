#pragma once

#include <QString>

#include "base/message_operations.h"

namespace quarn {

inline constexpr int kQrnValid = 0;
inline constexpr int kQrnNotFound = -1;
inline constexpr int kQrnTooLarge = 3;  ///< more than 102400 bytes
inline constexpr int kQrnNoFormat = 4;  ///< ".BEGIN" or ".END" is missing, or the text cannot be read

/// A first check of a configuration file's whole text: whether ".BEGIN" and ".END" occur in it, anywhere and
/// in any order.
[[nodiscard]] int CheckQrnFile(const QString& path);

/// Shows why a check failed; an unknown negative code gives a box without text.
void TellQrnFailure(int code, MessageOperations& messages);

/// The path of a file that passes the check; empty for any other, after showing the reason.
QString LoadQrnFile(const QString& path, MessageOperations& messages);

}  // namespace quarn
