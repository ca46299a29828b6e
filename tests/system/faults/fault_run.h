#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "system/faults/call_faults.h"

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

  /// Calls this before the first call, then before the second, until the operation ends without it.
  void PlayEvent(const std::function<void()>& event) {
    FaultPlan plan;
    plan.event = event;
    Play(std::array{0}, plan);
  }

 private:
  /// Runs the operation once with a plan in which no call fails finally.
  void PlayThrough(const FaultPlan& plan) {
    std::map<std::string, int> seen;
    EXPECT_FALSE(Strikes(plan, seen));
  }

  bool Strikes(const FaultPlan& plan, std::map<std::string, int>& seen) {
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

  std::string m_name;
  std::string m_place;
  Arrange m_arrange;
  Act m_act;
  Check m_check;
};

/// A full disk, a read-only one, and a broken one.
inline constexpr std::array kFileErrors = {ENOSPC, EACCES, EIO};

}  // namespace quarn::test
