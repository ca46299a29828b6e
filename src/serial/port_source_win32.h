#pragma once

#include "serial/port_source.h"

namespace quarn {

/// The COM ports that Windows has present, in the device manager's order and words.
class Win32PortSource final : public PortSource {
 public:
  bool FriendlyNames(QStringList& names) override;
};

}  // namespace quarn
