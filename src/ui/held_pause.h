#pragma once

#include "base/pause.h"
#include "ui/input_hold.h"

namespace quarn {

/// Waits while windows keep painting. Keys and clicks are held and delivered in order afterwards, and window
/// timers do not run.
class HeldPause final : public Pause {
 public:
  void For(int ms) override;

 private:
  InputHold m_hold;
};

}  // namespace quarn
