#pragma once

#include "serial/port_source.h"

namespace quarn {

/// The COM ports present on Windows, in the order and with the names of the device manager.
class Win32PortSource final : public PortSource {
 public:
  bool FriendlyNames(QStringList& names) override;
};

}  // namespace quarn
