#pragma once

#include <QString>
#include <cstdint>

#include "serial/port_connection.h"

namespace quarn {

// Pure functions over port names; free of threads and of the system.

/// The short name ("COM3", "COM12") in the brackets of a friendly name, or an empty text. The first bracket
/// with one or two characters after COM counts, if it starts within the first 250 positions. These characters
/// need not be digits.
QString ShortPortName(const QString& friendlyName);

/// Converts the first `count` friendly names to short names in ascending number order. Names without a
/// bracket are removed and reduce `count`; all entries after it are empty. A count outside 0 to 100 is
/// limited to this range.
void SortPortNames(std::int32_t& count, PortNames& names);

/// The digits of a port name of four or five characters ("COM3": "3", "COM12": "12"); for a name of any
/// other length the empty text.
QString PortNumberOf(const QString& portName);

/// Whether `name` is exactly one of the first `count` names.
bool IsPortAvailable(const QString& name, std::int32_t count, const PortNames& names);

/// Whether a name looks like a port's name with a number above 99, which is not supported.
bool IsBeyondLastPort(const QString& name);

/// How a window's title names the port: its name while it is open, the name and "-NC" while it is not,
/// kNoPort when there is none.
QString PortTitlePart(const QString& portName, bool open);

/// The path under which a port is opened: the name itself up to number 9 and for a name without a number,
/// from number 10 on the name behind the prefix \\.\. A number has two digits at most.
QString DevicePathOf(const QString& portName);

}  // namespace quarn
