#pragma once

#include <string_view>

#include "serial/serial_line_win32.h"
#include "support/requested_instrument.h"

namespace quarn::test {

/// Behind a COM port.
class ServedInstrument : public RequestedInstrument {
 public:
  explicit ServedInstrument(std::string_view rules) : RequestedInstrument(rules, QStringLiteral("COM3")) {}
};

/// Opens its port.
inline OpenResult OpenServedLine(const ServedInstrument& instrument) {
  return Win32LineOpener().Open(instrument.NodePath());
}

/// The time-outs for a line that a test reads from.
inline LineResult SetServedTimeouts(SerialLine& line, const LineTimeouts& timeouts) {
  return line.SetTimeouts(timeouts);
}

}  // namespace quarn::test
