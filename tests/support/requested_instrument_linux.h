#pragma once

#include "serial/open_line_linux.h"
#include "support/requested_instrument.h"

namespace quarn::test {

/// On the line that the environment names.
class ServedInstrument : public RequestedInstrument {
 public:
  explicit ServedInstrument(std::string_view rules)
      : RequestedInstrument(rules, qEnvironmentVariable("QUARN_LINE_NODE")) {}
};

/// Opens the near end of its line.
inline OpenResult OpenServedLine(const ServedInstrument& instrument) {
  return OpenTerminalDevice(instrument.NodePath());
}

}  // namespace quarn::test
