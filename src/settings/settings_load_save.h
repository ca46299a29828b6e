#pragma once

#include <QList>
#include <QString>

#include "base/message_operations.h"
#include "settings/settings_record.h"
#include "settings/settings_text.h"

namespace quarn {

enum class LoadResult {
  Loaded = 0,
  /// The path is not a file: it does not exist, or is a folder.
  NoFile = 1,
  /// At least one key is missing, or empty although it must not be.
  Incomplete = 2,
};

/// Fills the record from the file, one lookup per key. All or nothing: with any result but Loaded the record
/// does not change. The loaded marker is not changed; values are not checked. A value of more than 1023
/// characters is fatal.
[[nodiscard]] LoadResult LoadSettings(const QString& path, SettingsRecord& record);

/// The 28 keys that a record is saved under, with its texts. The text of ENBL_NULL is also saved under
/// FUNC_KEY.
[[nodiscard]] QList<NewValue> AllValues(const SettingsRecord& record);

/// Writes AllValues into the file, replacing it once, as UpdateValues does.
bool SaveAllSettings(const QString& path, const SettingsRecord& record);

/// Whether a COM_PORT text can be a port: "NONE", or "COM" and one or two more characters, none of them from
/// "(" to "/". The length is that of file names in bytes; the characters need not be digits.
[[nodiscard]] bool ValidatePortName(const QString& name);

// How the windows write what the user has selected or typed. If the next start could not read the result,
// nothing is written; updating the current settings is the caller's task.

/// Writes the values, replacing the file once. Returns false if they were refused.
bool UpdateIfFits(const QString& path, const QList<NewValue>& values);

// The same with a message if the values are refused. User-interface thread only: it runs an event loop.

/// Shows that the settings were not saved because they would not fit into their file.
void TellSettingsTooLong(MessageOperations& messages);

/// Writes the values, replacing the file once. Returns false if they were refused.
bool StoreValues(const QString& path, const QList<NewValue>& values, MessageOperations& messages);

/// The same for all values of a record.
bool StoreAllSettings(const QString& path, const SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
