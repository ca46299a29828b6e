#pragma once

#include "serial/port_source.h"

namespace quarn {

/// The COM ports present on Windows, with the names that the device manager shows.
class Win32PortSource final : public PortSource {
 public:
  std::optional<QList<Port>> Ports() override;
};

}  // namespace quarn
