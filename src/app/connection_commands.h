#pragma once

#include "app/main_window.h"
#include "app/program.h"
#include "dialogs/dialog_context.h"

namespace quarn {

/// Shows that no port is configured.
void TellPortUndefined(MessageOperations& messages);

/// Connects to the port in the settings and shows the result. Updates the connected mark.
bool ConnectWithMessages(Program& program);

// The commands of the Port menu. User-interface thread; each returns when its messages are closed.

void Connect(Program& program);
/// Asks first. Closes the line without a purge; the port stays the configured one.
void Disconnect(Program& program);
/// Closes the line and opens it again, with a status in the title meanwhile. After a failure there is no
/// connection.
void Reset(Program& program, MainWindow& window, const Pause& pause);

}  // namespace quarn
