#pragma once

#include "base/message_operations.h"
#include "base/wait_indicator.h"
#include "serial/port_connection.h"
#include "serial/serial_line.h"
#include "settings/settings_record.h"

namespace quarn {

/// What opening a port needs of the outside.
struct PortEnvironment {
  SerialLineOpener& opener;
  MessageOperations& messages;
  WaitIndicator& waitIndicator;
};

// All on the user-interface thread. None of them touches PortConnection::connected.

/// Opens the port named by COM_PORT for exclusive use and sets line parameters and time-outs. Whatever
/// the open gave is stored in `handle` at once. After a failed set-state or set-time-outs, which each
/// show a plain message, the line stays open and stored; a line that is still stored from before is
/// released first, for nothing could close it afterwards. No modem line is touched on purpose.
bool OpenPort(const SettingsRecord& settings, PortConnection& connection, const PortEnvironment& environment);

/// OpenPort for a port that is in the available-port list; for any other: false, and nothing touched.
bool ConnectPort(const SettingsRecord& settings, PortConnection& connection,
                 const PortEnvironment& environment);

/// Gives the line that is open the parameters and time-outs that an open would give it now. False when
/// there is none, or when a step fails, with the same messages; the line stays open and stored.
bool ReconfigurePort(const SettingsRecord& settings, PortConnection& connection,
                     const PortEnvironment& environment);

/// Purges, closes and connects again, with the wait indicator shown throughout. False when there was no
/// port to close or when the system reports a failed close.
bool ResetPort(const SettingsRecord& settings, PortConnection& connection,
               const PortEnvironment& environment);

/// Closes the line, if there is one, without a purge, and leaves the handle null. A blocked read is
/// woken first. True when there was nothing to close or the system reports success.
bool ClosePort(PortConnection& connection);

}  // namespace quarn
