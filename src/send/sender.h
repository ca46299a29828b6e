#pragma once

#include "send/send_options.h"

namespace quarn::send {

/// Opens the port, runs every command as one transaction and prints the outcomes on standard output, with
/// line feeds for the log's CRs. Returns the exit status; what could not be opened, and a line that failed,
/// is told on standard error.
int Send(const Options& options);

}  // namespace quarn::send
