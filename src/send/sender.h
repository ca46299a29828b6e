#pragma once

#include "send/send_options.h"

namespace quarn::send {

// In addition to the results of a transaction, 0 to 4.

/// The port or the settings could not be opened, or the line failed.
inline constexpr int kFailed = 5;
/// The arguments are wrong, or have a command that cannot be sent.
inline constexpr int kWrongUsage = 64;
/// Standard output could not be written.
inline constexpr int kNotPrinted = 74;

/// Opens the port, runs every command as one transaction and prints the outcomes on standard output, with
/// line feeds for the log's CRs. Returns the exit status. A port or file that cannot be
/// opened, and a failed line, are reported on standard error.
int Send(const Options& options);

}  // namespace quarn::send
