#pragma once

#include <QString>

namespace quarn {

/// What the description of a port says.
struct DescribedPort {
  QString product;            ///< the device's own name: outside input, may contain anything
  QString node;               ///< the device's path, for instance /dev/ttyUSB0
  QString unavailableReason;  ///< why the port cannot be opened; empty if it can
  QString name;               ///< COM1 to COM99
};

/// "<product> - <node>, <unavailable reason> (COM3)", at most 250 UTF-16 units.
///
/// Whatever the parts contain, the only "(COM" is that of the name: others become "[COM". Control and other
/// invisible characters are removed. In a text that is too long the product is cut, then the rest; the name
/// always stays.
QString DescriptionOf(const DescribedPort& port);

}  // namespace quarn
