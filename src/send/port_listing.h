#pragma once

#include <QByteArray>
#include <vector>

#include "send/send_options.h"
#include "serial/port_details.h"

namespace quarn::send {

/// The ports as the options want them: a table, lines of JSON or CSV. ASCII, with all other bytes spelled
/// out.
QByteArray PortListing(const std::vector<PortDetails>& ports, Output output);

/// Prints the ports that are present. Returns the exit status.
int PrintPorts(const Options& options, const QString& portsFolder);

}  // namespace quarn::send
