#pragma once

#include "base/pause.h"
#include "ui/input_hold.h"

namespace quarn {

/// Waits while windows keep painting; keys and clicks are held and handed on in order afterwards, and no
/// window's timer runs.
class HeldPause final : public Pause {
 public:
  void For(int ms) override;

 private:
  InputHold m_hold;
};

}  // namespace quarn
