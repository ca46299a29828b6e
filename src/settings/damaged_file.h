#pragma once

#include <QString>

namespace quarn {

/// Where a settings file is kept when the program gives it up: beside it, and one of them only.
[[nodiscard]] inline QString DamagedFileOf(const QString& path) { return path + QStringLiteral(".damaged"); }

/// Copies what stands at the path there, before defaults replace it. A file that is larger than any settings
/// file is moved instead, unread. True when nothing would be lost by a replacement: it is kept, or empty, or
/// holds the defaults already, or there is no file. False leaves the file as it is.
[[nodiscard]] bool KeepDamagedFile(const QString& path);

/// Moves the file itself there. False, and nothing touched, when that fails; the reason is logged.
bool MoveToDamagedFile(const QString& path);

/// Whether a file stands there that is larger than any settings file.
[[nodiscard]] bool IsTooLargeForSettings(const QString& path);

}  // namespace quarn
