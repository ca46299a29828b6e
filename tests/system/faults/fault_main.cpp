#include <gtest/gtest.h>
#include <unistd.h>

#include <QLoggingCategory>
#include <cstdlib>

/// The tests' folders are in memory where there is such a place: a disk settles at each rename over a file,
/// ten thousand times, and no test needs it to.
int main(int argc, char** argv) {
  const char* const memory = "/dev/shm";
  if (access(memory, W_OK) == 0) setenv("TMPDIR", memory, 1);
  // Each fault is noted there; the figures would drown in it.
  QLoggingCategory::setFilterRules(QStringLiteral("quarn.settings.debug=false"));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
