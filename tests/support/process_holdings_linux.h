#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace quarn::test {

/// What a process has of the system.
struct ProcessHoldings {
  std::ptrdiff_t handles = 0;  ///< descriptors
  std::ptrdiff_t threads = 0;
  bool operator==(const ProcessHoldings&) const = default;
};

inline ProcessHoldings HoldingsOfThisProcess() {
  const auto entries = [](const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
  };
  return {entries("/proc/self/fd"), entries("/proc/self/task")};
}

}  // namespace quarn::test
