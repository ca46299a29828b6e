#pragma once

#include <QList>
#include <QString>

#include "base/message_operations.h"
#include "settings/settings_record.h"
#include "settings/settings_text.h"

// How the windows write what the user has selected or typed. If the next start could not read the result,
// nothing is written and a message says so; updating the current settings is the caller's task.
// User-interface thread only: a message runs an event loop.
namespace quarn {

/// Shows that the settings were not saved because they would not fit into their file.
void TellSettingsTooLong(MessageOperations& messages);

/// Writes the values, replacing the file once. Returns false if they were refused.
bool StoreValues(const QString& path, const QList<NewValue>& values, MessageOperations& messages);

/// The same for all values of a record.
bool StoreAllSettings(const QString& path, const SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
