#pragma once

#include <memory>

#include "serial/port_source.h"

namespace quarn {

class DeviceWatch;

/// The COM ports present on Windows, with the names that the device manager shows.
class Win32PortSource final : public PortSource {
 public:
  Win32PortSource();
  ~Win32PortSource() override;
  Win32PortSource(const Win32PortSource&) = delete;
  Win32PortSource& operator=(const Win32PortSource&) = delete;

  std::optional<QList<Port>> Ports() override;
  /// Known after the first call of Ports in a thread with an event loop.
  std::optional<std::uint64_t> Revision() override;

 private:
  std::unique_ptr<DeviceWatch> m_watch;
};

}  // namespace quarn
