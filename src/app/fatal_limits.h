#pragma once

#include "app/program.h"

namespace quarn {

/// While it exists, a fatal limit is shown in a plain box before it ends the program: what was too long, by
/// how much, and in which file and line. Before that the connection's line is closed, which restores its
/// former state. Only one at a time. User-interface thread; on other threads a fatal limit ends the program
/// without a box.
class FatalLimits {
 public:
  explicit FatalLimits(Program& program);
  ~FatalLimits();
  FatalLimits(const FatalLimits&) = delete;
  FatalLimits& operator=(const FatalLimits&) = delete;
};

}  // namespace quarn
