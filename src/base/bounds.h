#pragma once

#include <QString>
#include <QtGlobal>

namespace quarn {

/// A fixed limit that has been passed. Lengths are in 16-bit characters.
struct PassedLimit {
  const char* name;    ///< of what was too long
  qsizetype limit;     ///< the last length that fits
  qsizetype length;    ///< what was asked for
  QString file;        ///< what was being read or written; empty when it was no file
  qsizetype line = 0;  ///< of that file, from 1; 0 when it was no single line
};

/// What was too long, by how much, and where, in one line: "value of 1024 characters, at most 1023 fit: line
/// 5 of /home/me/Quarn.ini".
[[nodiscard]] QString Describe(const PassedLimit& passed);

/// Ends the program because a fixed limit was passed: one line on standard error that Describe gives, then
/// std::abort(). Called before anything is written, so no file is touched. Callable from any thread.
[[noreturn]] void FatalBoundsError(const char* limitName, qsizetype limit, qsizetype length,
                                   qsizetype line = 0);

/// For as long as one lives, the bounds errors of this thread are about this file.
class BoundsFile {
 public:
  explicit BoundsFile(const QString& path);
  ~BoundsFile();
  BoundsFile(const BoundsFile&) = delete;
  BoundsFile& operator=(const BoundsFile&) = delete;

 private:
  const QString m_path;
  const QString* const m_outer;
};

/// Sees a bounds error before the program ends. It may leave by throwing, which is how a harness that
/// feeds hostile input outlives the error; when it returns, the program ends all the same.
using BoundsErrorHandler = void (*)(const PassedLimit& passed);

/// Installs a handler, or none (null, the state at start). Returns the one before.
BoundsErrorHandler SetBoundsErrorHandler(BoundsErrorHandler handler);

/// The check itself: `limit` is the last length that passes.
inline void RequireWithinBounds(const char* limitName, qsizetype limit, qsizetype length,
                                qsizetype line = 0) {
  if (length > limit) FatalBoundsError(limitName, limit, length, line);
}

}  // namespace quarn
