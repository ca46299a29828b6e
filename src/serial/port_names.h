#pragma once

#include <QString>
#include <cstdint>

#include "serial/port_connection.h"

namespace quarn {

// Pure functions over port names; free of threads and of the system.

/// The short name ("COM3", "COM12") that a friendly name carries in brackets, or the empty text. The
/// first bracket with one or two characters after COM counts, if it starts within the first 250
/// positions; whether those characters are digits is not asked.
QString ShortPortName(const QString& friendlyName);

/// Turns the first `count` friendly names into short names in ascending number order. Names without a
/// bracket drop out and lower `count`; every entry from there on is empty. A count outside 0 to 100 is
/// taken as the nearer of the two.
void SortPortNames(std::int32_t& count, PortNames& names);

/// The digits of a port name of four or five characters ("COM3": "3", "COM12": "12"); for a name of any
/// other length the empty text.
QString PortNumberOf(const QString& portName);

/// Whether `name` is exactly one of the first `count` names.
bool IsPortAvailable(const QString& name, std::int32_t count, const PortNames& names);

/// Whether a name has the form of a port's and a number above 99, which no port here has.
bool IsBeyondLastPort(const QString& name);

/// How a window's title names the port: its name while it is open, the name and "-NC" while it is not,
/// kNoPort when there is none.
QString PortTitlePart(const QString& portName, bool open);

/// The path under which a port is opened: the name itself up to number 9 and for a name without a number,
/// from number 10 on the name behind the prefix \\.\. A number has two digits at most.
QString DevicePathOf(const QString& portName);

}  // namespace quarn
