#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "settings/working_file.h"

namespace quarn {
namespace {

using RewriteCount = SettingsFileTest;

/// How often a file has been moved to this name since the watch began.
int MovesTo(int watch, const QByteArray& name) {
  std::array<char, 16384> buffer{};
  int moves = 0;
  for (ssize_t size = 0; (size = read(watch, buffer.data(), buffer.size())) > 0;) {
    for (ssize_t at = 0; at < size;) {
      inotify_event event{};
      std::memcpy(&event, buffer.data() + at, sizeof event);
      const char* moved = buffer.data() + at + sizeof event;
      if ((event.mask & IN_MOVED_TO) != 0 && name == moved) ++moves;
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
  }
  return moves;
}

TEST_F(RewriteCount, AnOperationIsOneReplacement) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord record;
  ASSERT_EQ(LoadSettings(path, record), LoadResult::Loaded);
  record.comBits = QStringLiteral("7");
  record.mem[9] = QStringLiteral("last");
  const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(watch, 0);
  // The kernel makes one of equal notes in a row; the temporary files stand between them.
  ASSERT_GE(inotify_add_watch(watch, QFile::encodeName(Path(QString())), IN_MOVED_TO | IN_MOVED_FROM), 0);
  EXPECT_TRUE(SaveAllSettings(path, record));
  EXPECT_EQ(MovesTo(watch, "Quarn.ini"), 1);
  EXPECT_EQ(ReadValue(path, keys::kComBits), QStringLiteral("7"));
  EXPECT_EQ(ReadValue(path, keys::kMem[9]), QStringLiteral("last"));
  EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(MovesTo(watch, "Quarn.ini"), 1);
  WithBytes(QByteArray(".BEGIN\nA=1\nB=2\nC=3\nCOM_PORT=COM3\n.END\n"));
  EXPECT_TRUE(UpgradeFile(path, CompareWithDefaults(path)));
  EXPECT_EQ(MovesTo(watch, "Quarn.ini"), 1);
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
  EXPECT_EQ(close(watch), 0);
}

}  // namespace
}  // namespace quarn
