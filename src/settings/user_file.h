#pragma once

#include <QString>

#include "base/message_operations.h"
#include "settings/settings_record.h"

namespace quarn {

/// Loads a user's configuration file: copies it over the working file and fills the record from there. A
/// file of another version is first brought up to date, when its user agrees: in place, or in the copy where
/// the file cannot be written. Reports every failure itself; the record, the working file and, save for an
/// agreed update, the user file then are what they were. A working file that is too large for one is moved to
/// where damaged files are kept. Returns the user file's path, or nothing when it was not loaded.
QString OpenUserFile(const QString& userFile, const QString& workingFile, SettingsRecord& record,
                     MessageOperations& messages);

/// Whether both files hold the same text: decoded, without regard to a byte-order mark or to carriage
/// returns at line ends. Of a longer file the first 16383 characters count; one that cannot be read counts
/// as empty.
[[nodiscard]] bool HoldSameSettings(const QString& userFile, const QString& workingFile);

/// Copies a file byte for byte over another or to a new place, as WriteWholeBytes writes. A file is never
/// copied onto itself, by whatever name, and none that is larger than kMaxFileBytes. True when it was copied.
bool CopySettingsFile(const QString& from, const QString& to);

}  // namespace quarn
