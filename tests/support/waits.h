#pragma once

#include <QTest>

namespace quarn::test {

/// No wait of a test takes this long, however busy the computer is.
inline constexpr int kLongestWaitMs = 60'000;

/// Lets events and ticks run until the condition holds. False when it never does.
template <typename Condition>
bool WaitUntil(Condition condition) {
  return QTest::qWaitFor(condition, kLongestWaitMs);
}

}  // namespace quarn::test
