#include <gtest/gtest.h>
#include <windows.h>

#include "app/instance_lock.h"

namespace quarn {
namespace {

// One test: what has been taken stays taken until this process ends.
TEST(InstanceLockWin32, IsTheNameOfAMutex) {
  const HANDLE other = CreateEventW(nullptr, FALSE, FALSE, L"Quarn.exe");
  ASSERT_NE(other, nullptr);
  QString reason;
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Failed) << "something else has that name";
  EXPECT_TRUE(reason.startsWith(QStringLiteral("Quarn.exe: "))) << reason.toStdString();
  CloseHandle(other);
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Taken);
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::TakenByAnother);
  const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"Quarn.exe");
  EXPECT_NE(mutex, nullptr);
  EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "nobody owns it";
  ReleaseMutex(mutex);
  CloseHandle(mutex);
}

}  // namespace
}  // namespace quarn
