#include "app/instance_lock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <csignal>

namespace quarn {
namespace {

class InstanceLockTest : public ::testing::Test {
 protected:
  InstanceLockTest() { UseFolder(m_folder.path()); }
  ~InstanceLockTest() override { UseFolder(m_before); }
  static void UseFolder(const QString& folder) { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder)); }

  QTemporaryDir m_folder;

 private:
  const QString m_before = qEnvironmentVariable("XDG_RUNTIME_DIR");
};

/// Another process that has taken the lock.
class Holder {
 public:
  Holder() {
    int ends[2] = {};
    EXPECT_EQ(::pipe(ends), 0);
    m_process = ::fork();
    if (m_process == 0) {
      const char result = TakeInstanceLock() == InstanceLock::Taken ? 'y' : 'n';
      if (::write(ends[1], &result, 1) == 1) ::pause();
      ::_exit(1);
    }
    char result = 0;
    EXPECT_EQ(::read(ends[0], &result, 1), 1);
    EXPECT_EQ(result, 'y');
    ::close(ends[0]);
    ::close(ends[1]);
  }
  ~Holder() { Kill(); }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  void Kill() {
    if (m_process <= 0) return;
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
    m_process = 0;
  }

 private:
  pid_t m_process = 0;
};

TEST_F(InstanceLockTest, IsTakenByOneProcessAtATime) {
  Holder holder;
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::TakenByAnother);
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::TakenByAnother);
}

TEST_F(InstanceLockTest, IsFreeAgainHoweverItsHolderEnds) {
  Holder holder;
  holder.Kill();
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::Taken);
}

TEST_F(InstanceLockTest, LiesInAFileOfTheUserAlone) {
  ASSERT_EQ(TakeInstanceLock(), InstanceLock::Taken);
  const QFile file(m_folder.filePath(QStringLiteral("Quarn.exe.lock")));
  ASSERT_TRUE(file.exists());
  EXPECT_EQ(
      file.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
      QFile::Permissions());
}

TEST_F(InstanceLockTest, MakesAMissingRuntimeFolderForTheUserAlone) {
  const QString folder = m_folder.filePath(QStringLiteral("runtime"));
  UseFolder(folder);
  const mode_t before = ::umask(0);
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::Taken);
  ::umask(before);
  struct stat info {};
  ASSERT_EQ(::stat(QFile::encodeName(folder).constData(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777U, 0700U);
}

TEST_F(InstanceLockTest, DoesNotUseTheRuntimeFolderOfAnotherUser) {
  constexpr uid_t kNobody = 65534;
  QString foreign = QStringLiteral("/");
  if (::geteuid() == 0) {
    foreign = m_folder.path();
    ASSERT_EQ(::chown(QFile::encodeName(foreign).constData(), kNobody, kNobody), 0);
  }
  UseFolder(foreign);
  const QTemporaryDir own;
  const QByteArray before = qgetenv("TMPDIR");
  qputenv("TMPDIR", QFile::encodeName(own.path()));
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::Taken);
  before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
  EXPECT_FALSE(QFile::exists(foreign + QStringLiteral("/Quarn.exe.lock")));
  const QFileInfoList made = QDir(own.path()).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
  ASSERT_EQ(made.size(), 1);
  EXPECT_TRUE(QFile::exists(made.first().filePath() + QStringLiteral("/Quarn.exe.lock")));
  struct stat info {};
  ASSERT_EQ(::stat(QFile::encodeName(made.first().filePath()).constData(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777U, 0700U);
}

TEST_F(InstanceLockTest, FailsWhereNoFileCanBe) {
  ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("Quarn.exe.lock")));
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::Failed);
}

TEST_F(InstanceLockTest, FollowsNoLink) {
  const QString target = m_folder.filePath(QStringLiteral("elsewhere"));
  ASSERT_TRUE(QFile::link(target, m_folder.filePath(QStringLiteral("Quarn.exe.lock"))));
  EXPECT_EQ(TakeInstanceLock(), InstanceLock::Failed);
  EXPECT_FALSE(QFile::exists(target));
}

}  // namespace
}  // namespace quarn
