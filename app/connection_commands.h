#pragma once

#include "app/program.h"

namespace quarn {

/// Connects to the port that the settings name and tells how it went. Sets the connected flag.
bool ConnectWithMessages(Program& program);

/// Tells that the settings name no port.
void TellPortUndefined(MessageOperations& messages);

}  // namespace quarn
