#include <gtest/gtest.h>

#include <QCoreApplication>

// The thread sanitizer takes a process that has started another one while it had threads for a copy of
// itself, because Qt starts processes in the memory of their parent, and would end it at its next thread:
// such as that of an instrument that is plugged in again. The name is the sanitizer's.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char* __tsan_default_options() { return "die_after_fork=0"; }

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
