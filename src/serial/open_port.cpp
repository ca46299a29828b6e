#include "serial/open_port.h"

#include "serial/line_parameters.h"
#include "serial/port_names.h"

namespace quarn {
namespace {

/// A failed look at the state has no message.
QString TextOf(SetUpStep failed) {
  switch (failed) {
    case SetUpStep::GetState:
      break;
    case SetUpStep::SetState:
      return QStringLiteral("Failed to set serial port state");
    case SetUpStep::SetTimeouts:
      return QStringLiteral("Failed to set serial port timeouts");
  }
  return {};
}

bool Configure(const SettingsRecord& settings, PortConnection& connection,
               const PortEnvironment& environment) {
  // Keeps a reference: while a message is shown the line may be closed.
  const std::shared_ptr<SerialLine> line = connection.handle.Line();
  SetUpStep step{};
  const LineResult result = SetUpLine(*line, LineSetUpOf(settings), step);
  if (result) return true;
  if (const QString text = TextOf(step); !text.isEmpty()) environment.messages.ShowPlainMessage(text);
  connection.lastFailure = result.Failure();
  return false;
}

}  // namespace

LineSetUp LineSetUpOf(const SettingsRecord& settings) {
  return {.state = {.baudRate = BaudRateOf(settings.comBps),
                    .byteSize = ByteSizeOf(settings.comBits),
                    .stopBits = StopBitsOf(settings.comStop),
                    .parity = ParityOf(settings.comParity)},
          .timeouts = TimeoutsOf(settings.comBps, settings.portSpeed)};
}

LineResult SetUpLine(SerialLine& line, const LineSetUp& wanted, SetUpStep& step) {
  step = SetUpStep::GetState;
  LineState former;
  if (LineResult got = line.GetState(former); !got) return got;
  step = SetUpStep::SetState;
  if (LineResult set = line.SetState(wanted.state); !set) return set;
  step = SetUpStep::SetTimeouts;
  return line.SetTimeouts(wanted.timeouts);
}

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
