#include "app/file_commands_fixture.h"
#include "support/small_disk_linux.h"

namespace quarn::test {
namespace {

class SaveOnFullDisk : public FileCommandsTest {
 protected:
  SmallDisk disk;
};

TEST_F(SaveOnFullDisk, TheOldFileStaysWholeAndInForce) {
  const QString user = disk.Path(QStringLiteral("user.qrn"));
  ASSERT_TRUE(QFile::copy(WithPort("COM3"), user));
  const QByteArray bytes = BytesOf(user);
  const QByteArray working = WorkingBytes();
  program->userFile = user;
  disk.Fill();
  commands->Save();
  chooser.answer = disk.Path(QStringLiteral("other.qrn"));
  commands->SaveAs();
  EXPECT_EQ(messages->shown, (QStringList{kNotSaved, kNotSaved}));
  EXPECT_EQ(BytesOf(user), bytes);
  EXPECT_EQ(WorkingBytes(), working);
  EXPECT_EQ(program->userFile, user);
  EXPECT_EQ(disk.Files(), (QStringList{QStringLiteral("filler"), QStringLiteral("user.qrn")}));
  EXPECT_FALSE(commands->MayExit());  // the question about unsaved settings still comes
}

}  // namespace
}  // namespace quarn::test
