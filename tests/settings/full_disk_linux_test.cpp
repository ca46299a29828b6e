#include "settings/user_file_test.h"
#include "support/small_disk_linux.h"

namespace quarn::test {
namespace {

class FullDiskUserFile : public UserFile {
 protected:
  /// Moves what is in a file onto the small disk.
  QString OnDisk(const QString& path, const QString& name) const {
    EXPECT_TRUE(QFile::copy(path, disk.Path(name)));
    return disk.Path(name);
  }

  SmallDisk disk;
};

TEST_F(FullDiskUserFile, ACopyLeavesTheOldFileAndNothingBeside) {
  const QByteArray bytes = BytesOf(working);
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  const QString onDisk = OnDisk(working, QStringLiteral("Quarn.ini"));
  disk.Fill();
  EXPECT_FALSE(CopySettingsFile(user, onDisk));
  EXPECT_FALSE(CopySettingsFile(user, disk.Path(QStringLiteral("new.qrn"))));
  EXPECT_EQ(BytesOf(onDisk), bytes);
  EXPECT_EQ(disk.Files(), (QStringList{QStringLiteral("filler"), QStringLiteral("Quarn.ini")}));
  ASSERT_TRUE(QFile::remove(disk.Path(QStringLiteral("filler"))));
  EXPECT_TRUE(CopySettingsFile(user, onDisk));
  EXPECT_EQ(BytesOf(onDisk), BytesOf(user));
}

TEST_F(FullDiskUserFile, AWorkingFileThatCannotBeReplacedStaysInForce) {
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  working = OnDisk(working, QStringLiteral("Quarn.ini"));
  disk.Fill();
  ExpectRefused(user, {kNotOpened});
  EXPECT_EQ(disk.Files(), (QStringList{QStringLiteral("filler"), QStringLiteral("Quarn.ini")}));
}

TEST_F(FullDiskUserFile, AUserFileThatCannotBeUpdatedIsUpdatedInTheCopy) {
  const QString user = OnDisk(WithEntry("MARK_COLOR=WHITE\r\n", "OLD_KEY=1\r\n"), QStringLiteral("user.qrn"));
  const QByteArray bytes = BytesOf(user);
  disk.Fill();
  messages.answers = {true};
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, (QStringList{kMayUpdate, kOpened}));
  EXPECT_EQ(BytesOf(user), bytes);
  EXPECT_EQ(BytesOf(working), NormalisedBytes(SortedDefaults()));
}

TEST_F(FullDiskUserFile, WhereNeitherFileCanBeWrittenBothStay) {
  const QString user = OnDisk(WithEntry("MARK_COLOR=WHITE\r\n", "OLD_KEY=1\r\n"), QStringLiteral("user.qrn"));
  working = OnDisk(working, QStringLiteral("Quarn.ini"));
  disk.Fill();
  messages.answers = {true};
  ExpectRefused(user, {kMayUpdate, kNotOpened});
}

TEST_F(FullDiskUserFile, TheRoomOfTheRejectedFileIsEnoughForTheOldText) {
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM100");
  const QString both = OnDisk(working, QStringLiteral("spare"));
  working = OnDisk(working, QStringLiteral("Quarn.ini"));
  disk.Fill();
  ASSERT_TRUE(QFile::remove(both));  // room for one file, no more
  ExpectRefused(user, {kNotLoaded});
}

}  // namespace
}  // namespace quarn::test
