#pragma once

#include <QString>

#include "send/settings_choice.h"
#include "serial/port_connection.h"

namespace quarn::send {

/// The spelling of a port's name that the rest of the program uses: "com4" and, on Windows, "\\.\COM4" are
/// COM4. Paths stay as they are.
QString PortNameOf(const QString& text);

/// Opens the port of the settings and sets up its line and its modem lines. Waits for a port in use as long
/// as the options say. Returns 0, or the exit status; then the reason has been printed in one line on
/// standard error. Ports are listed only if the one that is named has not been found without.
int Connect(const Options& options, const SettingsRecord& settings, const QString& portsFolder,
            PortConnection& connection);

}  // namespace quarn::send
