#pragma once

#include "send/exit_status.h"
#include "send/send_options.h"

namespace quarn::send {

/// Opens the port, runs every command as one transaction and prints the outcomes on standard output, with
/// line feeds for the log's CRs. Returns the exit status. A port or file that cannot be
/// opened, and a failed line, are reported on standard error.
int Send(const Options& options);

}  // namespace quarn::send
