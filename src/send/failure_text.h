#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>

#include "serial/serial_line.h"

namespace quarn::send {

/// Why a port could not be opened or set up, and what helps, in one line. `port` is the name that the user
/// gave.
QString FailureText(const QString& port, const LineFailure& failure);

/// Why responses from a port may be cut off, and what helps, in one line: its adapter keeps bytes for
/// `latency`, and a response ends after `silence`. Empty if that is short enough.
QString LatencyWarning(const QString& port, std::chrono::milliseconds latency,
                       std::chrono::milliseconds silence);

/// A command in a message, at most 40 of its bytes.
QString Quoted(const QByteArray& command);

}  // namespace quarn::send
