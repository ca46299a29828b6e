#pragma once

#include <functional>
#include <string>

namespace quarn::test {

/// While it exists, one allocation of this process gets no memory: number `failing`, counted from 1, of the
/// calls to malloc and its relatives in any thread, also from libraries. One at a time.
class MemoryFault {
 public:
  explicit MemoryFault(int failing);
  ~MemoryFault();
  MemoryFault(const MemoryFault&) = delete;
  MemoryFault& operator=(const MemoryFault&) = delete;

  /// Whether the failing allocation was reached.
  [[nodiscard]] bool Struck() const;
};

/// How a process ended that ran `work`.
struct ProcessEnd {
  bool itself = false;  ///< `work` returned
  int status = 0;       ///< what `work` returned
  bool said = false;    ///< it aborted, and said on its standard error that there was no memory
  std::string text;     ///< how else it ended, and what it said
};

/// Runs `work` in a copy of this process. An exception that leaves it ends the copy, as it ends the program.
ProcessEnd InCopyOfThisProcess(const std::function<int()>& work);

}  // namespace quarn::test
