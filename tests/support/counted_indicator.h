#pragma once

#include <functional>

#include "base/wait_indicator.h"

namespace quarn::test {

/// Counts how often the sign has been shown and not yet restored.
class CountedIndicator final : public WaitIndicator {
 public:
  int depth = 0;
  std::function<void()> changed;  ///< called after each change

  void Show() override { Change(1); }
  void Restore() override { Change(-1); }

 private:
  void Change(int by) {
    depth += by;
    if (changed) changed();
  }
};

}  // namespace quarn::test
