#pragma once

#include <map>
#include <memory>

#include "support/line_requests.h"

namespace quarn::test {

/// A line that nobody answers. It can be plugged in as one port.
class PseudoTerminal {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal() {
    if (!m_port.isEmpty()) PluggedIn().erase(m_port);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  void PlugIn(const QString& port) const {
    m_port = port;
    PluggedIn()[port] = std::make_unique<LineRequest>(port, QByteArray());
  }
  static bool Unplug(const QString& port) { return PluggedIn().erase(port) > 0; }

 private:
  static std::map<QString, std::unique_ptr<LineRequest>>& PluggedIn() {
    static std::map<QString, std::unique_ptr<LineRequest>> requests;
    return requests;
  }

  mutable QString m_port;
};

/// Makes this line a port of the system.
inline void PlugPort(const QString& /*portsFolder*/, const QString& port, const PseudoTerminal& line) {
  line.PlugIn(port);
}

/// Removes the port. False if there was none.
inline bool UnplugPort(const QString& /*portsFolder*/, const QString& port) {
  return PseudoTerminal::Unplug(port);
}

}  // namespace quarn::test
