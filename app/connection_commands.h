#pragma once

#include "app/program.h"

namespace quarn {

/// Connects to the port that the settings name and tells how it went. Sets the connected flag.
bool ConnectWithMessages(Program& program);

}  // namespace quarn
