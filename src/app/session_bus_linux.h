#pragma once

#include <QByteArray>
#include <functional>

/// What the session bus is like before Qt is told of it: Qt waits for its answer, or searches for one in
/// vain, before it shows the first window.
namespace quarn {

/// The variable with the bus's address. Without it the bus is in the session's folder, if anywhere.
constexpr char kBusAddress[] = "DBUS_SESSION_BUS_ADDRESS";

/// Whether the session has no bus, and no program that the D-Bus library would start to get one.
bool NobodyHasBus();

/// Whether the session's bus listens and does not answer in time. An idle computer's bus has 5 ms. A busy
/// computer's has 300 ms: `isBusy` is asked again every 5 ms. False if nobody listens, or the bus is reached
/// in another way than by a local socket: then Qt learns that at once.
bool IsBusSilent(const std::function<bool()>& isBusy);

/// Whether the computer has more to do than it has processors, now or on average of the last minute; also if
/// that is not known.
bool IsComputerBusy();

/// The same for what /proc/loadavg says.
bool IsBusy(const QByteArray& loadAverage, unsigned processors);

}  // namespace quarn
