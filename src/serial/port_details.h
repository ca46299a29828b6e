#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace quarn {

/// What is known of a port without opening it. Texts come from devices and may contain anything.
struct PortDetails {
  QString name{};         ///< COM7
  QString description{};  ///< the device's own name
  QString device{};       ///< what is opened: /dev/ttyUSB0
  QString lastingName{};  ///< a path that stays the same when devices come and go; empty if there is none
  /// Why it cannot be opened ("no permission: group dialout"); empty if nothing is known.
  QString unavailableReason{};
  QString holder{};  ///< the program that uses it, with its number; empty if none is known
};

/// The ports present, in the order of their numbers. A new device gets its number. nullopt if the list cannot
/// be obtained.
std::optional<std::vector<PortDetails>> ListPortDetails(const QString& portsFolder);

}  // namespace quarn
