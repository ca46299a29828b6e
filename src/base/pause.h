#pragma once

namespace quarn {

/// A short wait of the user-interface thread, for example until a device is ready.
class Pause {
 public:
  virtual ~Pause() = default;
  /// Returns after `ms` milliseconds.
  virtual void For(int ms) = 0;
};

}  // namespace quarn
