#pragma once

#include "app/program.h"

namespace quarn {

/// While it lives, a fatal limit is told in a plain box before it ends the program: what was too long, by how
/// much, and in which file and line. The line of the connection is closed before that, so that it is what it
/// was before the program came. Not two at a time. User-interface thread; a limit passed on another one ends
/// the program without a box.
class FatalLimits {
 public:
  explicit FatalLimits(Program& program);
  ~FatalLimits();
  FatalLimits(const FatalLimits&) = delete;
  FatalLimits& operator=(const FatalLimits&) = delete;
};

}  // namespace quarn
