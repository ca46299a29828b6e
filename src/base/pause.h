#pragma once

namespace quarn {

/// A short wait of the user-interface thread, as while a device comes to rest.
class Pause {
 public:
  virtual ~Pause() = default;
  /// Returns after `ms` milliseconds.
  virtual void For(int ms) = 0;
};

}  // namespace quarn
