#pragma once

#include <QTest>

#include "support/longest_wait.h"

namespace quarn::test {

/// Lets events and ticks run until the condition holds. False when it never does.
template <typename Condition>
bool WaitUntil(Condition condition) {
  return QTest::qWaitFor(condition, kLongestWaitMs);
}

}  // namespace quarn::test
