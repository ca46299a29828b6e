#pragma once

#include <QByteArray>
#include <QString>

#include "serial/serial_line.h"

namespace quarn::send {

/// Why a port could not be opened or set up, and what helps, in one line. `port` is the name that the user
/// gave.
QString FailureText(const QString& port, const LineFailure& failure);

/// A command in a message, at most 40 of its bytes.
QString Quoted(const QByteArray& command);

}  // namespace quarn::send
