#pragma once

#include <QList>
#include <QString>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

#include "serial/port_source.h"

namespace quarn::test {

/// An adapter at this port: "Adapter (COM3)".
inline Port Adapter(const QString& name) { return {name, QStringLiteral("Adapter (%1)").arg(name)}; }

inline QList<Port> Adapters(std::initializer_list<const char*> names) {
  QList<Port> ports;
  for (const char* name : names) ports.append(Adapter(QLatin1String(name)));
  return ports;
}

/// Adapters at COM1, COM2 and so on.
inline QList<Port> Adapters(int count) {
  QList<Port> ports;
  for (int i = 1; i <= count; ++i) ports.append(Adapter(QStringLiteral("COM%1").arg(i)));
  return ports;
}

/// Lists the ports that a test gives it.
class ListedPorts final : public PortSource {
 public:
  ListedPorts() = default;
  explicit ListedPorts(QList<Port> ports) : present(std::move(ports)) {}

  QList<Port> present;
  bool works = true;
  std::optional<std::uint64_t> revision = {};
  std::function<void()> whileListing = {};

  std::optional<QList<Port>> Ports() override {
    if (whileListing) whileListing();
    return works ? std::optional(present) : std::nullopt;
  }
  std::optional<std::uint64_t> Revision() override { return revision; }
};

}  // namespace quarn::test
