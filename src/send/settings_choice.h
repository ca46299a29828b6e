#pragma once

#include <QString>

#include "send/command_line_options.h"
#include "settings/settings_record.h"

namespace quarn::send {

/// The settings of the file that the options name, or of the working settings file, with the port that they
/// name. False, and the reason told on standard error in one line, when they cannot be had.
bool LoadChosenSettings(const Options& options, const QString& dataFolder, SettingsRecord& settings);

}  // namespace quarn::send
