#pragma once

#include <QStringList>
#include <memory>
#include <utility>

#include "serial/connected_mark.h"
#include "serial/serial_line.h"

namespace quarn {

/// The open port, nothing (null), or what a failed open leaves behind (invalid). Both null and invalid
/// mean "not open".
class PortHandle {
 public:
  PortHandle() = default;
  static PortHandle Invalid() {
    PortHandle handle;
    handle.m_invalid = true;
    return handle;
  }
  explicit PortHandle(std::shared_ptr<SerialLine> line) : m_line(std::move(line)) {}

  [[nodiscard]] bool IsOpen() const { return m_line != nullptr; }
  [[nodiscard]] bool IsNull() const { return !m_line && !m_invalid; }
  [[nodiscard]] bool IsInvalid() const { return m_invalid; }
  [[nodiscard]] const std::shared_ptr<SerialLine>& Line() const { return m_line; }

 private:
  std::shared_ptr<SerialLine> m_line;
  bool m_invalid = false;
};

/// The one port record of the process. User-interface thread.
struct PortConnection {
  PortHandle handle;
  /// Updated by the commands that connect and disconnect, never by OpenPort itself.
  ConnectedMark connected;
  /// The ports present, in ascending number order. RefreshPortList replaces it.
  QStringList portNames;
  /// Why the last OpenPort failed; kind None after a success.
  LineFailure lastFailure;
};

}  // namespace quarn
