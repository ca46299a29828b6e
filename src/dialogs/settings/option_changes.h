#pragma once

#include <QStringView>

#include "dialogs/dialog_context.h"
#include "settings/settings_key.h"
#include "settings/settings_table.h"

namespace quarn {

/// The target of a choice: a field of the current settings and its key in the working settings file.
struct OptionBinding {
  SettingsField field;
  SettingsKey key;
};

// Changes of settings; each takes effect at once. Afterwards the dialog shows the current settings again,
// because a refused change leaves them unchanged. User-interface thread only. Each may show a message, which
// runs an event loop.

using OptionChange = void (*)(const DialogContext&, const OptionBinding&, const QString& value);

/// Sets the field and writes the key, even if the value has not changed.
void StoreOption(const DialogContext& context, const OptionBinding& option, const QString& value);

/// The same for settings that the Terminal Screen shows: it redraws itself.
void StoreShownOption(const DialogContext& context, const OptionBinding& option, const QString& value);

/// PORT_SPEED. Sets the new time-outs of an open port at once. If the port refuses, the previous speed stays,
/// nothing is written and an error is shown. The current value changes nothing.
void ChangePortSpeed(const DialogContext& context, const OptionBinding& option, const QString& value);

/// INPUT_MAX. An open Terminal Screen loses its log with the change, so the user is asked first. The current
/// value changes nothing.
void ChangeInputMax(const DialogContext& context, const OptionBinding& option, const QString& value);

}  // namespace quarn
