#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "system/faults/call_faults.h"
#include "system/faults/memory_fault.h"

namespace quarn::test {

/// One fault, as passed to a check.
struct Fault {
  bool struck = false;  ///< false if the operation ended without it
  std::string call;
  int error = 0;
};

/// A test of an operation: its preparation, the operation, and the check after it.
template <class Arrange, class Act, class Check>
class FaultRun {
 public:
  FaultRun(std::string name, std::string place, Arrange arrange, Act act, Check check)
      : m_name(std::move(name)), m_place(std::move(place)), m_arrange(arrange), m_act(act), m_check(check) {}

  /// Makes the first call fail, then the second, until the operation ends without a fault. Once per error.
  template <class Errors>
  void Play(const Errors& errors, FaultPlan plan = {}) {
    int points = 0;
    std::map<std::string, int> seen;
    for (const int error : errors) {
      plan.error = error;
      plan.failing = 1;
      while (Strikes(plan, seen)) ++plan.failing;
      points += plan.failing - 1;
      if (testing::Test::HasFatalFailure()) return;
    }
    EXPECT_GT(points, 0) << "no call was seen";
    std::cout << "faults: " << m_name << ": " << points;
    for (const auto& [call, count] : seen) std::cout << ", " << call << ' ' << count;
    std::cout << '\n';
  }

  /// Without faults: each call that can wait is interrupted, and a read or write moves one byte.
  void PlayHeldUp() {
    FaultPlan interrupted;
    interrupted.interruptions = 3;
    PlayThrough(interrupted);
    FaultPlan byteByByte;
    byteByByte.byteByByte = true;
    PlayThrough(byteByByte);
  }

  /// The first allocation gets no memory, then the second, until the operation ends without that; each time
  /// in a copy of this process. It may end the copy, but only with the message about it, and with whole
  /// files: each has the content that some file had before the operation or has after it. Returns how many
  /// failed.
  int PlayWithoutMemory() {
    std::set<std::string> whole;
    for (const bool acts : {false, true}) {
      const ProcessEnd end = InCopyOfThisProcess([&] {
        m_arrange();
        if (acts) m_act();
        return 0;
      });
      EXPECT_TRUE(end.itself) << end.text;
      whole.merge(FileContents());
    }
    std::map<std::string, int> ends;
    int points = 0;
    for (; !testing::Test::HasFailure(); ++points) {
      const int failing = points + 1;
      SCOPED_TRACE(m_name + ", no memory at allocation " + std::to_string(failing));
      const ProcessEnd end = InCopyOfThisProcess([&] { return PlayMemoryFault(failing); });
      if (end.itself && end.status == kNotReached) break;
      ++ends[end.itself ? "went on" : "ended"];
      EXPECT_TRUE(end.said || (end.itself && end.status == kReached)) << end.text;
      for (const std::string& content : FileContents()) EXPECT_TRUE(whole.contains(content)) << content;
    }
    std::cout << "memory: " << m_name << ": " << points;
    for (const auto& [end, count] : ends) std::cout << ", " << end << ' ' << count;
    std::cout << '\n';
    return points;
  }

  /// Calls this before the first call, then before the second, until the operation ends without it.
  void PlayEvent(const std::function<void()>& event) {
    FaultPlan plan;
    plan.event = event;
    Play(std::array{0}, plan);
  }

  /// For an operation that leaves a part of its work to another thread, and waits for it.
  void CountEveryThread() { m_everyThread = true; }

 private:
  /// Runs the operation once with a plan in which no call fails finally.
  void PlayThrough(const FaultPlan& plan) {
    std::map<std::string, int> seen;
    EXPECT_FALSE(Strikes(plan, seen));
  }

  enum MemoryStatus { kReached, kNotReached, kCheckFailed };

  int PlayMemoryFault(int failing) {
    m_arrange();
    Fault fault{.struck = false, .call = "malloc", .error = ENOMEM};
    {
      const MemoryFault memory(failing);
      m_act();
      fault.struck = memory.Struck();
    }
    m_check(fault);
    if (testing::Test::HasFailure()) return kCheckFailed;
    return fault.struck ? kReached : kNotReached;
  }

  /// Whether the name is that of a file with a dot and six more characters.
  static bool IsTemporary(const std::filesystem::path& path) {
    constexpr std::string_view kAdded = ".XXXXXX";
    return path.extension().string().size() == kAdded.size() && path.stem().has_extension();
  }

  /// Of the files at the place, if it is a folder of the test's; not of temporary ones, which nothing reads.
  [[nodiscard]] std::set<std::string> FileContents() const {
    namespace fs = std::filesystem;
    std::set<std::string> contents;
    if (m_place == "/" || !fs::is_directory(m_place)) return contents;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_place)) {
      if (!entry.is_regular_file() || IsTemporary(entry.path())) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      contents.emplace(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return contents;
  }

  bool Strikes(FaultPlan plan, std::map<std::string, int>& seen) {
    plan.everyThread = m_everyThread;
    m_arrange();
    Fault fault;
    {
      CallFaults faults(m_place, plan);
      m_act();
      fault = {faults.Struck(), faults.Failed(), plan.error};
      if (!fault.struck) seen = faults.Seen();
    }
    const std::string how =
        plan.event ? " comes afterwards" : std::string(" fails: ") + std::strerror(plan.error);
    const std::string what = fault.struck ? fault.call + how : "no fault";
    SCOPED_TRACE(m_name + ", call " + std::to_string(plan.failing) + ", " + what);
    m_check(fault);
    return fault.struck;
  }

  bool m_everyThread = false;
  std::string m_name;
  std::string m_place;
  Arrange m_arrange;
  Act m_act;
  Check m_check;
};

/// A full disk, a read-only one, and a broken one.
inline constexpr std::array kFileErrors = {ENOSPC, EACCES, EIO};

}  // namespace quarn::test
