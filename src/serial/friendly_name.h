#pragma once

#include <QString>

namespace quarn {

/// The parts of a friendly name, for a system that does not provide complete ones.
struct PortDescription {
  QString product;            ///< the device's own name: outside input, may contain anything
  QString node;               ///< the device's path, for instance /dev/ttyUSB0
  QString unavailableReason;  ///< why the port cannot be opened; empty if it can
  QString portName;           ///< COM1 to COM99
};

/// "<product> - <node>, <unavailable reason> (COM3)".
///
/// Whatever the parts contain, ShortPortName of the result is `portName`: a "(COM" in them becomes "[COM",
/// control and other invisible characters are removed, and the product, then the rest, is cut so that the
/// closing bracket is within the first 250 positions.
QString ComposeFriendlyName(const PortDescription& port);

}  // namespace quarn
