#pragma once

#include <QString>

#include "base/message_operations.h"

namespace quarn {

// What the dialogs, the commands and the port monitor say about a port. Each returns when its box is closed.
// User-interface thread only.

/// The port has been connected on a person's choice.
void TellConnectedTo(MessageOperations& messages, const QString& port);

/// Whether the message about a failed connect ends with a full stop: the two dialogs differ.
enum class FailureSentence { WithFullStop, WithoutFullStop };

/// The chosen port could not be connected.
void TellFailedToConnect(MessageOperations& messages, const QString& port, FailureSentence sentence);

/// The port is gone, or cannot be opened.
void TellPortNotAvailable(MessageOperations& messages, const QString& port);

}  // namespace quarn
