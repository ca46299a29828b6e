#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>

#include <cstddef>

namespace quarn::test {

/// What a process has of the system.
struct ProcessHoldings {
  std::ptrdiff_t handles = 0;
  std::ptrdiff_t threads = 0;
  bool operator==(const ProcessHoldings&) const = default;
};

inline ProcessHoldings HoldingsOfThisProcess() {
  ProcessHoldings holdings;
  DWORD handles = 0;
  EXPECT_NE(GetProcessHandleCount(GetCurrentProcess(), &handles), FALSE);
  holdings.handles = static_cast<std::ptrdiff_t>(handles);
  const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  EXPECT_NE(all, INVALID_HANDLE_VALUE);
  THREADENTRY32 thread{};
  thread.dwSize = sizeof thread;
  for (BOOL more = Thread32First(all, &thread); more != FALSE; more = Thread32Next(all, &thread)) {
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++holdings.threads;
  }
  CloseHandle(all);
  return holdings;
}

}  // namespace quarn::test
