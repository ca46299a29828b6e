#pragma once

#include <QString>

namespace quarn {

// Pure functions over port names; free of threads and of the system.

/// The digits of a port name of four or five characters ("COM3": "3", "COM12": "12"); for a name of any
/// other length the empty text.
QString PortNumberOf(const QString& portName);

/// Whether a name looks like a port's name with a number above 99, which is not supported.
bool IsBeyondLastPort(const QString& name);

/// How a window's title names the port: its name while it is open, the name and "-NC" while it is not,
/// kNoPort when there is none.
QString PortTitlePart(const QString& portName, bool open);

/// The path under which a port is opened: the name itself up to number 9 and for a name without a number,
/// from number 10 on the name behind the prefix \\.\. A number has two digits at most.
QString DevicePathOf(const QString& portName);

}  // namespace quarn
