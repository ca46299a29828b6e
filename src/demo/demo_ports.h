#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "serial/port_source.h"
#include "serial/serial_line.h"

namespace quarn {

/// The only port of a demo; its settings name it.
inline constexpr char kDemoPort[] = "COM7";

/// Opens the demo's port: each time a line to a new simulated instrument.
class DemoLineOpener final : public SerialLineOpener {
 public:
  OpenResult Open(const QString& devicePath) override;
};

/// The demo's port is always present.
class DemoPortSource final : public PortSource {
 public:
  std::optional<QList<Port>> Ports() override;
  std::optional<std::uint64_t> Revision() override { return 0; }
};

}  // namespace quarn
