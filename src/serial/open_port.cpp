#include "serial/open_port.h"

#include "serial/line_parameters.h"
#include "serial/port_names.h"

namespace quarn {
namespace {

LineResult SetUp(SerialLine& line, const SettingsRecord& settings, MessageOperations& messages) {
  LineState state;
  if (LineResult got = line.GetState(state); !got) return got;
  state.baudRate = BaudRateOf(settings.comBps);
  state.byteSize = ByteSizeOf(settings.comBits);
  state.stopBits = StopBitsOf(settings.comStop);
  state.parity = ParityOf(settings.comParity);
  if (LineResult set = line.SetState(state); !set) {
    messages.ShowPlainMessage(QStringLiteral("Failed to set serial port state"));
    return set;
  }
  LineResult set = line.SetTimeouts(TimeoutsOf(settings.comBps, settings.portSpeed));
  if (!set) messages.ShowPlainMessage(QStringLiteral("Failed to set serial port timeouts"));
  return set;
}

bool Configure(const SettingsRecord& settings, PortConnection& connection,
               const PortEnvironment& environment) {
  // Keeps a reference: while a message is shown the line may be closed.
  const std::shared_ptr<SerialLine> line = connection.handle.Line();
  const LineResult result = SetUp(*line, settings, environment.messages);
  if (!result) connection.lastFailure = result.Failure();
  return static_cast<bool>(result);
}

}  // namespace

bool OpenPort(const SettingsRecord& settings, PortConnection& connection,
              const PortEnvironment& environment) {
  ClosePort(connection);
  OpenResult opened = environment.opener.Open(DevicePathOf(settings.comPort));
  connection.lastFailure = opened.failure;
  if (!opened.line) {
    connection.handle = PortHandle::Invalid();
    return false;
  }
  connection.handle = PortHandle(opened.line);
  return Configure(settings, connection, environment);
}

bool ReconfigurePort(const SettingsRecord& settings, PortConnection& connection,
                     const PortEnvironment& environment) {
  if (!connection.handle.IsOpen()) return false;
  // A read left behind would block it on a system that does one operation at a time on a line.
  connection.handle.Line()->CancelIo();
  connection.handle.Line()->AllowIo();
  return Configure(settings, connection, environment);
}

bool ConnectPort(const SettingsRecord& settings, PortConnection& connection,
                 const PortEnvironment& environment) {
  if (!connection.portNames.contains(settings.comPort)) {
    connection.lastFailure = {LineError::NotFound, QStringLiteral("%1 is not present").arg(settings.comPort)};
    return false;
  }
  return OpenPort(settings, connection, environment);
}

bool ResetPort(const SettingsRecord& settings, PortConnection& connection,
               const PortEnvironment& environment) {
  const WaitShown wait(environment.waitIndicator);
  if (connection.handle.IsOpen()) {
    // A read left behind would block the purge on a system that does one operation at a time on a line.
    connection.handle.Line()->CancelIo();
    connection.handle.Line()->Purge();
  }
  // A handle left by a failed open cannot be closed; it counts as a failed close.
  const bool open = connection.handle.IsOpen();
  if (!ClosePort(connection) || !open) return false;
  return ConnectPort(settings, connection, environment);
}

bool ClosePort(PortConnection& connection) {
  const PortHandle handle = std::exchange(connection.handle, PortHandle());
  return !handle.IsOpen() || handle.Line()->Close();
}

}  // namespace quarn
