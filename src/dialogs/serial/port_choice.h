#pragma once

#include <QString>
#include <functional>

#include "dialogs/dialog_context.h"
#include "dialogs/serial/port_messages.h"

namespace quarn {

/// Shows a status ("" for none) in the title of the window in which the port was selected.
using TitleStatus = std::function<void(const QString& status)>;

// What happens after a port is selected. User-interface thread; each returns when its messages are closed.
// Keys and clicks during the wait for the line are held, and then a message box is in front of every window,
// so there can be no second choice meanwhile.

/// Closes the open line, connects to `port` and shows the result. After a success the port is the current
/// one, also in the settings and in the working settings file. After a failure the previous port is opened
/// again, and counts as connected even if that fails.
bool ConnectToChosenPort(const DialogContext& context, const QString& port, FailureSentence sentence,
                         const TitleStatus& titleStatus);

/// Makes this the current port, also in the settings and in the working settings file.
void TakeAsCurrent(const DialogContext& context, const QString& port);

/// Closes the line and deselects the port: NONE becomes the current port, also in the settings and in the
/// working settings file. Shows a message.
void ChooseNoPort(const DialogContext& context);

}  // namespace quarn
