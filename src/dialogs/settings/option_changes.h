#pragma once

#include <QStringView>

#include "dialogs/dialog_context.h"
#include "settings/settings_key.h"
#include "settings/settings_table.h"

namespace quarn {

/// What a choice does: a field of the live settings and its key in the working settings file.
struct OptionBinding {
  SettingsField field;
  SettingsKey key;
};

// How a setting takes a new value; each takes effect at once. The dialog shows the live settings again
// afterwards: a change that was refused leaves them as they were. User-interface thread only. Each may show a
// message, and with it run an event loop.

using OptionChange = void (*)(const DialogContext&, const OptionBinding&, const QString& value);

/// Sets the field and writes the key, also when the value is not a new one.
void StoreOption(const DialogContext& context, const OptionBinding& option, const QString& value);

/// The same for what the Terminal Screen shows: it draws itself anew.
void StoreShownOption(const DialogContext& context, const OptionBinding& option, const QString& value);

/// PORT_SPEED. An open port takes the new time-outs at once; when it refuses, the former speed stays in
/// force, nothing is written and an error tells. The value in force already changes nothing.
void ChangePortSpeed(const DialogContext& context, const OptionBinding& option, const QString& value);

/// INPUT_MAX. An open Terminal Screen loses its log with the change, so that it is asked for first. The
/// value in force already changes nothing.
void ChangeInputMax(const DialogContext& context, const OptionBinding& option, const QString& value);

}  // namespace quarn
