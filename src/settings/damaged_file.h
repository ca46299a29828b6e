#pragma once

#include <QString>

namespace quarn {

/// The path of the copy of a settings file that the program replaces: beside the file, only one copy.
[[nodiscard]] inline QString DamagedFileOf(const QString& path) { return path + QStringLiteral(".damaged"); }

/// Copies the file at the path there, before the defaults replace it. A file larger than any settings file is
/// moved instead, without reading it. Returns true if a replacement would lose nothing: the file is kept, or
/// empty, or already has the defaults, or does not exist. Returns false and changes nothing otherwise.
[[nodiscard]] bool KeepDamagedFile(const QString& path);

/// Moves the file there. If that fails, returns false, changes nothing and logs the reason.
bool MoveToDamagedFile(const QString& path);

/// Whether the file there is larger than any settings file.
[[nodiscard]] bool IsTooLargeForSettings(const QString& path);

}  // namespace quarn
