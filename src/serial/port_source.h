#pragma once

#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

namespace quarn {

/// A serial port that is present.
struct Port {
  QString name;         ///< "COM3"
  QString description;  ///< its text in the detailed list: "USB Adapter - /dev/ttyUSB0 (COM3)"

  bool operator==(const Port&) const = default;
};

/// The source of the ports present.
///
/// Threads: only the user-interface thread. It is polled ten times a second, so a call must be very cheap if
/// nothing has changed.
class PortSource {
 public:
  virtual ~PortSource() = default;

  /// The ports present, at most 100, in ascending number order. Two ports can have the same name. Returns
  /// nullopt if the device list cannot be obtained.
  virtual std::optional<QList<Port>> Ports() = 0;

  /// A number that changes whenever Ports may return something new. A change also wakes this thread's event
  /// loop. Returns nullopt if changes cannot be detected; poll Ports instead.
  virtual std::optional<std::uint64_t> Revision() { return std::nullopt; }
};

}  // namespace quarn
