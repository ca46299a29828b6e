#pragma once

#include <QStringList>
#include <cstdint>
#include <optional>

namespace quarn {

/// The maximum length of a friendly name in UTF-16 units (a buffer of 520 bytes with its closing NUL).
inline constexpr int kFriendlyNameCapacity = 259;

/// The source of the friendly names of the ports present.
///
/// Threads: only the user-interface thread. It is polled ten times a second, so a call must be very cheap if
/// nothing has changed.
class PortSource {
 public:
  virtual ~PortSource() = default;

  /// Replaces `names` with the friendly names of at most 100 present ports, each of at most 259 UTF-16 units.
  /// If the device list cannot be obtained, returns false and does not change `names`.
  virtual bool FriendlyNames(QStringList& names) = 0;

  /// A number that changes whenever FriendlyNames may return something new. A change also wakes this thread's
  /// event loop. Returns nullopt if changes cannot be detected; poll FriendlyNames instead.
  virtual std::optional<std::uint64_t> Revision() { return std::nullopt; }
};

}  // namespace quarn
