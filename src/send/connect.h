#pragma once

#include <QString>

#include "send/settings_choice.h"
#include "serial/port_connection.h"

namespace quarn::send {

/// The spelling of a port's name that the rest of the program uses: "com4" and, on Windows, "\\.\COM4" are
/// COM4. Paths stay as they are.
QString PortNameOf(const QString& text);

/// Opens the port of the settings and sets up its line. Prints the reason of a failure in one line on
/// standard error. Ports are listed only if the one that is named has not been found without.
bool Connect(const Options& options, const SettingsRecord& settings, const QString& portsFolder,
             PortConnection& connection);

}  // namespace quarn::send
