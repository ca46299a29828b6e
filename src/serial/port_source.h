#pragma once

#include <QStringList>
#include <cstdint>
#include <optional>

namespace quarn {

/// A friendly name has at most this many UTF-16 units (a buffer of 520 bytes with its closing NUL).
inline constexpr int kFriendlyNameCapacity = 259;

/// Where the friendly names of the ports present come from.
///
/// Threads: used by one thread, the user interface's. It is asked ten times a second, so an answer to
/// which nothing has changed must cost next to nothing.
class PortSource {
 public:
  virtual ~PortSource() = default;

  /// Replaces `names` by the friendly names of at most 100 ports that are present now, each of at most
  /// 259 UTF-16 units. False, and `names` untouched, when the device list cannot be obtained.
  virtual bool FriendlyNames(QStringList& names) = 0;

  /// A number that is another one whenever the next answer may differ from one given before. When it changes
  /// by itself, this thread's event loop has been woken. Nothing where it is not known what may have
  /// changed: then only asking tells.
  virtual std::optional<std::uint64_t> Revision() { return std::nullopt; }
};

}  // namespace quarn
