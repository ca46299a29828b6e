#pragma once

#include <QString>

#include "send/send_options.h"
#include "settings/settings_record.h"

namespace quarn::send {

/// The settings of the file in the options, or of the working settings file, with the port in the options.
/// Returns false and prints the reason in one line on standard error if they cannot be read.
bool LoadChosenSettings(const Options& options, const QString& dataFolder, SettingsRecord& settings);

}  // namespace quarn::send
