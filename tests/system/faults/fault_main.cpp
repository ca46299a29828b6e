#include <gtest/gtest.h>
#include <unistd.h>

#include <QLoggingCategory>
#include <cstdlib>

/// The tests' folders are in memory if the system has a place for that: a disk would flush at each of ten
/// thousand renames, and no test needs that.
int main(int argc, char** argv) {
  const char* const memory = "/dev/shm";
  if (access(memory, W_OK) == 0) setenv("TMPDIR", memory, 1);
  // Each fault is logged there, which would hide the results.
  QLoggingCategory::setFilterRules(QStringLiteral("quarn.settings.debug=false"));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
