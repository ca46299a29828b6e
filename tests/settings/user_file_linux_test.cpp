#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFileInfo>
#include <functional>

#include "settings/user_file_test.h"

namespace quarn::test {
namespace {

constexpr uid_t kNobody = 65534;

QByteArray Utf8(const QString& path) { return QFile::encodeName(path); }

/// Runs the steps in a process of an ordinary user. Returns how many of them failed.
int FailuresAsOrdinaryUser(const QList<std::function<bool()>>& steps) {
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(100);
    int failures = 0;
    for (const auto& step : steps) failures += step() ? 0 : 1;
    _exit(failures);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class UserFileLinux : public UserFile {
 protected:
  /// The folder belongs to the ordinary user; the file keeps its owner.
  void GiveFolderAway() const {
    if (geteuid() == 0) {
      ASSERT_EQ(chown(Utf8(Path(QString())), kNobody, kNobody), 0);
    }
  }
};

TEST_F(UserFileLinux, AReadOnlyWorkingFileIsAFailedCopy) {
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  ASSERT_EQ(chmod(Utf8(working), 0444), 0);
  ExpectRefused(user, {kNotOpened});
}

TEST_F(UserFileLinux, AReadOnlyUserFileOfAnotherVersionIsUpdatedInTheCopy) {
  const QString user = WithEntry("MARK_COLOR=WHITE\r\n", "OLD_KEY=1\r\n");
  const QByteArray bytes = BytesOf(user);
  ASSERT_EQ(chmod(Utf8(user), 0444), 0);
  messages.answers = {true};
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, (QStringList{kMayUpdate, kOpened})) << "the file was not updated";
  EXPECT_EQ(BytesOf(user), bytes);
  EXPECT_EQ(BytesOf(working), NormalisedBytes(SortedDefaults()));
  EXPECT_EQ(record.comPort, QStringLiteral("NONE"));
  EXPECT_FALSE(HoldSameSettings(user, working)) << "saving would still change it";
  messages.shown.clear();
  messages.answers = {false};
  ExpectRefused(user, {kMayUpdate});
}

TEST_F(UserFileLinux, AUserFileInAFolderThatTakesNoFileIsUpdatedInTheCopy) {
  ASSERT_TRUE(QDir().mkdir(Path(QStringLiteral("shared"))));
  const QString user = WithEntry("MARK_COLOR=WHITE\r\n", "OLD_KEY=1\r\n", QStringLiteral("shared/user.qrn"));
  const QByteArray bytes = BytesOf(user);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(Utf8(working), kNobody, kNobody), 0);
  }
  GiveFolderAway();
  ASSERT_EQ(chmod(Utf8(Path(QStringLiteral("shared"))), 0555), 0);
  messages.answers = {true};
  EXPECT_EQ(FailuresAsOrdinaryUser({
                [&] { return Open(user) == user; },
                [&] {
                  return messages.shown == QStringList{kMayUpdate, kOpened};
                },
            }),
            0);
  ASSERT_EQ(chmod(Utf8(Path(QStringLiteral("shared"))), 0755), 0);
  EXPECT_EQ(BytesOf(user), bytes);
  EXPECT_EQ(BytesOf(working), NormalisedBytes(SortedDefaults()));
}

TEST_F(UserFileLinux, AReadOnlyUserFileOpensAllTheSame) {
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  ASSERT_EQ(chmod(Utf8(user), 0444), 0);
  EXPECT_EQ(Open(user), user);
  EXPECT_EQ(messages.shown, QStringList{kOpened});
}

TEST_F(UserFileLinux, AWorkingFileThatCannotBeReadIsNotCopiedOver) {
  const QByteArray bytes = BytesOf(working);
  const QString user = WithEntry("COM_PORT=NONE", "COM_PORT=COM3");
  ASSERT_EQ(chmod(Utf8(user), 0444), 0);
  ASSERT_EQ(chmod(Utf8(working), 0200), 0);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(Utf8(working), kNobody, kNobody), 0);
  }
  GiveFolderAway();
  EXPECT_EQ(FailuresAsOrdinaryUser({
                [&] { return Open(user).isEmpty(); },
                [&] { return messages.shown == QStringList{kNotOpened}; },
                [&] { return record.comPort == QStringLiteral("COM7"); },
            }),
            0);
  ASSERT_EQ(chmod(Utf8(working), 0600), 0);
  EXPECT_EQ(BytesOf(working), bytes);
}

TEST_F(UserFileLinux, AReadOnlyFileInAWritableFolderIsNotReplaced) {
  const QByteArray bytes = BytesOf(working);
  const QString from = WithBytes("x", QStringLiteral("from"));
  ASSERT_EQ(chmod(Utf8(from), 0444), 0);
  ASSERT_EQ(chmod(Utf8(working), 0444), 0);
  GiveFolderAway();
  const QList<std::function<bool()>> steps = {
      [&] { return WriteWholeText(Path(QStringLiteral("beside")), QStringLiteral("writable")); },
      [&] { return UpdateValue(working, keys::kComPort, QStringLiteral("COM3")); },
      [&] { return !WriteWholeText(working, QStringLiteral("x")); },
      [&] { return !WriteDefaultFile(working); },
      [&] { return !AddKeyLine(working, QStringLiteral("NEW=1")); },
      [&] { return !RemoveKey(working, keys::kComPort); },
      [&] { return !CopySettingsFile(from, working); },
  };
  EXPECT_EQ(FailuresAsOrdinaryUser(steps), 0);
  EXPECT_EQ(BytesOf(working), bytes);
  // Other users may write there, but not this one.
  if (geteuid() == 0) {
    ASSERT_EQ(chmod(Utf8(working), 0644), 0);
    EXPECT_EQ(FailuresAsOrdinaryUser(steps), 0);
    EXPECT_EQ(BytesOf(working), bytes);
  }
  EXPECT_EQ(FilesInFolder(),
            (QStringList{QStringLiteral("beside"), QStringLiteral("from"), QStringLiteral("Quarn.ini")}));
}

TEST_F(UserFileLinux, AFileWithoutAnyWritePermissionIsReadOnlyForEverybody) {
  const QByteArray bytes = BytesOf(working);
  const QString from = WithBytes("x", QStringLiteral("from"));
  for (const mode_t mode : {mode_t{0444}, mode_t{0400}, mode_t{0555}}) {
    ASSERT_EQ(chmod(Utf8(working), mode), 0);
    EXPECT_FALSE(CopySettingsFile(from, working)) << mode;
    EXPECT_FALSE(WriteDefaultFile(working)) << mode;
  }
  EXPECT_EQ(BytesOf(working), bytes);
  EXPECT_EQ(FilesInFolder(), (QStringList{QStringLiteral("from"), QStringLiteral("Quarn.ini")}));
}

TEST_F(UserFileLinux, ACopyKeepsThePermissionsOfTheFileThatItReplaces) {
  const QString from = WithBytes("x", QStringLiteral("from"));
  ASSERT_EQ(chmod(Utf8(from), 0600), 0);
  for (const mode_t mode : {mode_t{0600}, mode_t{0640}, mode_t{0666}}) {
    ASSERT_EQ(chmod(Utf8(working), mode), 0);
    EXPECT_TRUE(CopySettingsFile(from, working));
    struct stat info {};
    ASSERT_EQ(stat(Utf8(working), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, mode);
  }
}

TEST_F(UserFileLinux, ACopyThroughALinkReplacesWhatItLeadsTo) {
  const QString from = WithBytes("x", QStringLiteral("from"));
  const QString link = Path(QStringLiteral("link"));
  ASSERT_EQ(symlink("Quarn.ini", Utf8(link)), 0);
  EXPECT_FALSE(CopySettingsFile(working, link));
  EXPECT_TRUE(CopySettingsFile(from, link));
  EXPECT_TRUE(QFileInfo(link).isSymLink());
  EXPECT_EQ(BytesOf(working), QByteArray("x"));
  const QString hard = Path(QStringLiteral("hard"));
  ASSERT_EQ(::link(Utf8(working), Utf8(hard)), 0);
  EXPECT_FALSE(CopySettingsFile(working, hard));
  EXPECT_EQ(BytesOf(working), QByteArray("x"));
}

TEST_F(UserFileLinux, ALinkToNothingLeadsToNothingAgainAfterARejection) {
  QFile::remove(working);
  ASSERT_EQ(symlink("nowhere", Utf8(working)), 0);
  ExpectRefused(WithEntry("COM_PORT=NONE", "COM_PORT=COM100"), {kNotLoaded});
  EXPECT_TRUE(QFileInfo(working).isSymLink());
  EXPECT_FALSE(QFile::exists(Path(QStringLiteral("nowhere"))));
}

TEST_F(UserFileLinux, APipeIsNeitherReadNorReplaced) {
  const QString pipe = Path(QStringLiteral("pipe"));
  ASSERT_EQ(mkfifo(Utf8(pipe), 0600), 0);
  EXPECT_FALSE(CopySettingsFile(pipe, working));
  EXPECT_FALSE(CopySettingsFile(working, pipe));
  EXPECT_FALSE(HoldSameSettings(pipe, working));
  struct stat info {};
  ASSERT_EQ(lstat(Utf8(pipe), &info), 0);
  EXPECT_TRUE(S_ISFIFO(info.st_mode));
}

}  // namespace
}  // namespace quarn::test
