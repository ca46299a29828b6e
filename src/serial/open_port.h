#pragma once

#include "base/message_operations.h"
#include "base/wait_indicator.h"
#include "serial/port_connection.h"
#include "serial/serial_line.h"
#include "settings/settings_record.h"

namespace quarn {

/// What opening a port needs from the caller.
struct PortEnvironment {
  SerialLineOpener& opener;
  MessageOperations& messages;
  WaitIndicator& waitIndicator;
};

/// What a line is set to.
struct LineSetUp {
  LineState state;
  LineTimeouts timeouts;
};
LineSetUp LineSetUpOf(const SettingsRecord& settings);

enum class SetUpStep { GetState, SetState, SetTimeouts };
/// Sets parameters and time-outs of an open line. A failure's step goes into `step`.
LineResult SetUpLine(SerialLine& line, const LineSetUp& wanted, SetUpStep& step);

// All on the user-interface thread. None of them touches PortConnection::connected.

/// Opens the port named by COM_PORT for exclusive use and sets line parameters and time-outs. The result of
/// the open is stored in `handle` at once. If setting the state or the time-outs fails, a plain message is
/// shown, and the line stays open and stored. A line that is still stored is released first, because nothing
/// could close it afterwards. Modem lines are not changed on purpose.
bool OpenPort(const SettingsRecord& settings, PortConnection& connection, const PortEnvironment& environment);

/// OpenPort, only for a port in the available-port list; for any other port returns false and does nothing.
bool ConnectPort(const SettingsRecord& settings, PortConnection& connection,
                 const PortEnvironment& environment);

/// Sets the parameters and time-outs of the open line, as an open would now. Returns false if there is none,
/// or if a step fails, with the same messages; the line stays open and stored.
bool ReconfigurePort(const SettingsRecord& settings, PortConnection& connection,
                     const PortEnvironment& environment);

/// Purges, closes and connects again, with the wait indicator shown. Returns false if there was no port to
/// close or the system reports a failed close.
bool ResetPort(const SettingsRecord& settings, PortConnection& connection,
               const PortEnvironment& environment);

/// Closes the line, if any, without a purge, and sets the handle to null. Wakes a blocked read first. Returns
/// true if there was nothing to close or the system reports success.
bool ClosePort(PortConnection& connection);

}  // namespace quarn
