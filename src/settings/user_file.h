#pragma once

#include <QString>

#include "base/message_operations.h"
#include "settings/settings_record.h"

namespace quarn {

/// Loads a user's configuration file: copies it over the working file and fills the record from there. A file
/// of another version is first updated, if the user agrees: the file itself, or the copy if the file cannot
/// be written. Reports every failure itself; then the record, the working file and, except for an agreed
/// update, the user file are unchanged. A working file that is too large is moved to the place of damaged
/// files. Returns the user file's path, or an empty text if it was not loaded.
QString OpenUserFile(const QString& userFile, const QString& workingFile, SettingsRecord& record,
                     MessageOperations& messages);

/// Whether both files have the same text: decoded, ignoring a byte-order mark and carriage returns at line
/// ends. Only the first 16383 characters of a file count; an unreadable file counts as empty.
[[nodiscard]] bool HoldSameSettings(const QString& userFile, const QString& workingFile);

/// Copies a file byte for byte over another or to a new place, as WriteWholeBytes writes. Never copies a file
/// onto itself, under any name, nor a file larger than kMaxFileBytes. Returns true if it was copied.
bool CopySettingsFile(const QString& from, const QString& to);

}  // namespace quarn
