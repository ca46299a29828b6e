#pragma once

#include <QString>
#include <QtGlobal>

namespace quarn {

/// A fixed limit that was exceeded. Lengths are in 16-bit characters.
struct PassedLimit {
  const char* name;    ///< of what was too long
  qsizetype limit;     ///< the largest allowed length
  qsizetype length;    ///< the actual length
  QString file;        ///< the file being read or written; empty if there is none
  qsizetype line = 0;  ///< line of that file, from 1; 0 if it was not a single line
};

/// Describes in one line what was too long, by how much, and where: "value of 1024 characters, at most 1023
/// fit: line 5 of /home/me/Quarn.ini".
[[nodiscard]] QString Describe(const PassedLimit& passed);

/// Ends the program because a fixed limit was exceeded: prints the line of Describe on standard error, then
/// calls std::abort(). Called before anything is written, so no file is changed. Any thread.
[[noreturn]] void FatalBoundsError(const char* limitName, qsizetype limit, qsizetype length,
                                   qsizetype line = 0);

/// While an object exists, bounds errors of this thread are reported for this file.
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

/// Called for a bounds error before the program ends. It may throw: a test harness uses this to survive
/// hostile input. If it returns, the program ends.
using BoundsErrorHandler = void (*)(const PassedLimit& passed);

/// Installs a handler, or none (null, the default). Returns the previous one.
BoundsErrorHandler SetBoundsErrorHandler(BoundsErrorHandler handler);

/// The check. `limit` is the largest allowed length.
inline void RequireWithinBounds(const char* limitName, qsizetype limit, qsizetype length,
                                qsizetype line = 0) {
  if (length > limit) FatalBoundsError(limitName, limit, length, line);
}

}  // namespace quarn
