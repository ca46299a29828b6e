#pragma once

#include <QString>

namespace quarn {

/// What a friendly name is made of on a system that does not keep ready-made ones.
struct PortDescription {
  QString product;    ///< as the device calls itself: outside input, may hold anything
  QString node;       ///< the device's path, for instance /dev/ttyUSB0
  QString hindrance;  ///< what stops the port from opening; empty when nothing does
  QString portName;   ///< COM1 to COM99
};

/// "<product> - <node>, <hindrance> (COM3)".
///
/// Whatever the parts hold, ShortPortName of the result is `portName`: a "(COM" in them is rewritten to
/// "[COM", control and other invisible characters are removed, and the product, then the rest, is cut so
/// that the closing bracket is within the first 250 positions.
QString ComposeFriendlyName(const PortDescription& port);

}  // namespace quarn
