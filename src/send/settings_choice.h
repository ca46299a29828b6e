#pragma once

#include <QString>

#include "send/send_options.h"
#include "settings/settings_record.h"

namespace quarn::send {

/// Puts what the options say over the settings.
void ApplyOptions(const Options& options, SettingsRecord& settings);

/// What to say if the settings, before the options are put over them, name a rate that is replaced by another
/// one. Empty if they do not.
QString ReplacedRate(const Options& options, const SettingsRecord& settings);

/// The settings of the file in the options, or of the working settings file, with what the options say put
/// over them. The built-in defaults if the options say so, and if there is no working settings file but a
/// port in the options. Returns false and prints the reason in one line on standard error if they cannot be
/// read, or if no port is chosen. `dataFolder` may be empty.
bool LoadChosenSettings(const Options& options, const QString& dataFolder, SettingsRecord& settings);

}  // namespace quarn::send
