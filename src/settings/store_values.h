#pragma once

#include <QList>
#include <QString>

#include "base/message_operations.h"
#include "settings/settings_record.h"
#include "settings/settings_text.h"

// How the windows write what a person has chosen or typed. What the next start could not read is not written,
// and a message says so; the live settings are the caller's. User-interface thread only: a message runs an
// event loop.
namespace quarn {

/// Tells that the settings were not saved because they would not fit into their file.
void TellSettingsTooLong(MessageOperations& messages);

/// Writes the values with one replacement of the file. False when they were refused.
bool StoreValues(const QString& path, const QList<NewValue>& values, MessageOperations& messages);

/// The same with all the values of a record.
bool StoreAllSettings(const QString& path, const SettingsRecord& record, MessageOperations& messages);

}  // namespace quarn
