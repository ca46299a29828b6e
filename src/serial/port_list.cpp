#include "serial/port_list.h"

namespace quarn {

bool RefreshPortList(PortSource& source, PortConnection& connection) {
  const std::optional<QList<Port>> ports = source.Ports();
  if (!ports) {
    return false;
  }
  connection.portNames.clear();
  for (const Port& port : *ports) {
    connection.portNames.append(port.name);
  }
  return true;
}

}  // namespace quarn
