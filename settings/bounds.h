#pragma once

#include <QtGlobal>

namespace quarn {

/// Ends the program because a fixed limit was passed: one line on standard error that names the limit,
/// then std::abort(). Called before anything is written, so no file is touched. Lengths are in 16-bit
/// characters. Callable from any thread.
[[noreturn]] void FatalBoundsError(const char* limitName, qsizetype limit, qsizetype length);

/// Sees a bounds error before the program ends. It may leave by throwing, which is how a harness that
/// feeds hostile input outlives the error; when it returns, the program ends all the same.
using BoundsErrorHandler = void (*)(const char* limitName);

/// Installs a handler, or none (null, the state at start). Returns the one before.
BoundsErrorHandler SetBoundsErrorHandler(BoundsErrorHandler handler);

/// The check itself: `limit` is the last length that passes.
inline void RequireWithinBounds(const char* limitName, qsizetype limit, qsizetype length) {
  if (length > limit) FatalBoundsError(limitName, limit, length);
}

}  // namespace quarn
