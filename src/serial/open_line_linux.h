#pragma once

#include <QString>

#include "serial/serial_line.h"

namespace quarn {

/// Opens the lines that the links of a ports folder name.
class LinuxLineOpener final : public SerialLineOpener {
 public:
  explicit LinuxLineOpener(QString portsFolder) : m_portsFolder(std::move(portsFolder)) {}
  OpenResult Open(const QString& devicePath) override;

 private:
  QString m_portsFolder;
};

/// Opens a terminal device by its node, for instance "/dev/ttyUSB0", exclusively and as a binary line.
/// The line's former state is restored when it is closed.
OpenResult OpenTerminalDevice(const QString& node);

}  // namespace quarn
