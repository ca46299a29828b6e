#pragma once

#include <QString>
#include <functional>

#include "dialogs/dialog_context.h"

namespace quarn {

/// Puts a status ("" for none) into the title of the window in which the port was chosen.
using TitleStatus = std::function<void(const QString& status)>;

/// Whether the sentence that a connect has failed ends with a full stop: the two dialogs differ in it.
enum class FailureSentence { WithFullStop, WithoutFullStop };

// What follows the choice of a port. User-interface thread; each returns when its messages are gone. Keys
// and clicks that come during the wait for the line are held back, and a message box is in front of every
// window after that: no second choice gets in between.

/// Gives up the line that is open and connects to `port`, and tells how it went. After a success the port
/// is the current one, in the settings and in the working settings file, too. After a failure the former
/// port is opened again, and counts as connected even where that fails.
bool ConnectToChosenPort(const DialogContext& context, const QString& port, FailureSentence sentence,
                         const TitleStatus& titleStatus);

/// Gives up the line and the configured port: NONE becomes the current port, in the settings and in the
/// working settings file, too. Tells so.
void ChooseNoPort(const DialogContext& context);

}  // namespace quarn
