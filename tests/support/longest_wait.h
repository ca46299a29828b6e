#pragma once

namespace quarn::test {

/// No wait of a test takes this long, however busy the computer is.
inline constexpr int kLongestWaitMs = 60'000;

}  // namespace quarn::test
