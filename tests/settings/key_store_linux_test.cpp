#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"

// Root is refused by no permission, so a write is made to fail by the largest size a file may have, which
// holds for everybody, and permissions are looked at rather than run into.
namespace quarn {
namespace {

using KeyStoreLinux = SettingsFileTest;

/// While it lives, no file can grow beyond `bytes`: a write behaves as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
    const rlimit full{bytes, m_before.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
  }
  ~FullDisk() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0);
    EXPECT_NE(std::signal(SIGXFSZ, m_signal), SIG_ERR);
  }

 private:
  rlimit m_before{};
  void (*m_signal)(int);
};

QByteArray Utf8(const QString& path) { return QFile::encodeName(path); }

TEST_F(KeyStoreLinux, AFullDiskLeavesTheOldFile) {
  const QByteArray bytes = NormalisedBytes(SortedDefaults());
  const QString path = WithBytes(bytes);
  {
    const FullDisk full(100);
    EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3")));
    EXPECT_FALSE(WriteWholeText(path, QString(1000, u'x')));
    EXPECT_FALSE(WriteDefaultFile(path));
    EXPECT_FALSE(AddKeyLine(path, QStringLiteral("NEW=1")));
    EXPECT_FALSE(RemoveKey(path, keys::kComPort));
    EXPECT_FALSE(WriteDefaultFile(Path(QStringLiteral("fresh"))));
  }
  EXPECT_EQ(BytesOf(path), bytes);
  EXPECT_EQ(FilesInFolder(), QStringList{QStringLiteral("Quarn.ini")});
  EXPECT_TRUE(WriteWholeText(path, QString(1000, u'x')));
}

TEST_F(KeyStoreLinux, AFailedUpdateSaysTrueAndSoDoesASaveAll) {
  const QByteArray bytes = NormalisedBytes(SortedDefaults());
  const QString path = WithBytes(bytes);
  SettingsRecord record;
  const FullDisk full(100);
  EXPECT_TRUE(SaveAllSettings(path, record));
  EXPECT_EQ(BytesOf(path), bytes);
}

TEST_F(KeyStoreLinux, AReplacedFileIsAnotherOne) {
  // The old bytes are still whole for whoever has the old file open: nothing was written into it.
  const QByteArray bytes = ".BEGIN\nMEM0=old\n.END\n";
  const QString path = WithBytes(bytes);
  QFile before(path);
  ASSERT_TRUE(before.open(QIODevice::ReadOnly));
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("new")));
  EXPECT_EQ(before.readAll(), bytes);
  EXPECT_EQ(ReadValue(path, keys::kMem[0]), QStringLiteral("new"));
}

TEST_F(KeyStoreLinux, APortNameIsMeasuredInTheLocalesBytes) {
  // Four and five characters, but six bytes here; five bytes in the last.
  EXPECT_FALSE(ValidatePortName(QStringLiteral("COM\u20AC")));
  EXPECT_FALSE(ValidatePortName(QStringLiteral("COM1\u00E9")));
  EXPECT_TRUE(ValidatePortName(QStringLiteral("COM\u00E9")));
}

TEST_F(KeyStoreLinux, KeepsTheFilesPermissions) {
  const QString path = WithBytes(".BEGIN\nMEM0=old\n.END\n");
  for (const mode_t mode : {mode_t{0600}, mode_t{0640}, mode_t{0666}}) {
    ASSERT_EQ(chmod(Utf8(path), mode), 0);
    EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("new")));
    struct stat info {};
    ASSERT_EQ(stat(Utf8(path), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, mode);
  }
}

TEST_F(KeyStoreLinux, FollowsASymbolicLinkAndKeepsIt) {
  const QString real = WithBytes(".BEGIN\nMEM0=old\n.END\n", QStringLiteral("real"));
  const QString link = Path(QStringLiteral("link"));
  ASSERT_EQ(symlink(Utf8(real), Utf8(link)), 0);
  EXPECT_EQ(ClassifyPath(link), PathKind::File);
  EXPECT_TRUE(UpdateValue(link, keys::kMem[0], QStringLiteral("new")));
  EXPECT_EQ(ReadValue(real, keys::kMem[0]), QStringLiteral("new"));
  EXPECT_TRUE(QFileInfo(link).isSymLink());
}

TEST_F(KeyStoreLinux, ALinkToNothingIsNothing) {
  const QString link = Path(QStringLiteral("link"));
  ASSERT_EQ(symlink("nowhere", Utf8(link)), 0);
  EXPECT_EQ(ClassifyPath(link), PathKind::Nothing);
  EXPECT_EQ(ReadWholeText(link), std::nullopt);
}

TEST_F(KeyStoreLinux, APipeOrDeviceIsNoFileAndIsNeverRead) {
  const QString pipe = Path(QStringLiteral("pipe"));
  ASSERT_EQ(mkfifo(Utf8(pipe), 0600), 0);
  QStringList entries;
  SettingsRecord record;
  for (const QString& path : {pipe, QStringLiteral("/dev/zero")}) {
    EXPECT_EQ(ClassifyPath(path), PathKind::Nothing);
    EXPECT_EQ(ReadWholeText(path), std::nullopt);
    EXPECT_EQ(ListEntries(path, entries), -1);
    EXPECT_EQ(LoadSettings(path, record), LoadResult::NoFile);
  }
}

TEST_F(KeyStoreLinux, WhatIsNoFileIsNeverReplacedByOne) {
  const QString pipe = Path(QStringLiteral("pipe"));
  ASSERT_EQ(mkfifo(Utf8(pipe), 0600), 0);
  const QString linked = Path(QStringLiteral("linked"));
  ASSERT_EQ(symlink("pipe", Utf8(linked)), 0);
  const QString circle = Path(QStringLiteral("circle"));
  ASSERT_EQ(symlink("circle", Utf8(circle)), 0);
  for (const QString& path : {pipe, linked, circle}) {
    EXPECT_FALSE(WriteWholeText(path, QStringLiteral("text"))) << path.toStdString();
    EXPECT_FALSE(WriteDefaultFile(path)) << path.toStdString();
  }
  struct stat info {};
  ASSERT_EQ(lstat(Utf8(pipe), &info), 0);
  EXPECT_TRUE(S_ISFIFO(info.st_mode));
  ASSERT_EQ(lstat(Utf8(linked), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  ASSERT_EQ(lstat(Utf8(circle), &info), 0);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
}

TEST_F(KeyStoreLinux, APathBelowAFileIsNothingThere) {
  const QString below = WithBytes("x") + QStringLiteral("/Quarn.ini");
  EXPECT_EQ(ClassifyPath(below), PathKind::Nothing);
  EXPECT_FALSE(WriteDefaultFile(below));
  EXPECT_TRUE(UpdateValue(below, keys::kComPort, QStringLiteral("COM3")));
  EXPECT_EQ(BytesOf(Path()), QByteArray("x"));
}

TEST_F(KeyStoreLinux, AReadOnlyFolderKeepsTheOldFile) {
  const QByteArray bytes = ".BEGIN\nMEM0=old\n.END\n";
  const QString path = WithBytes(bytes);
  ASSERT_EQ(chmod(Utf8(Path(QString())), 0500), 0);
  // Root writes here all the same; what counts for both is that the file is whole and the result is true.
  EXPECT_TRUE(UpdateValue(path, keys::kMem[0], QStringLiteral("new")));
  const std::optional<QString> value = ReadValue(path, keys::kMem[0]);
  ASSERT_EQ(chmod(Utf8(Path(QString())), 0700), 0);
  if (geteuid() == 0) {
    EXPECT_EQ(value, QStringLiteral("new"));
  } else {
    EXPECT_EQ(BytesOf(path), bytes);
  }
  EXPECT_EQ(FilesInFolder(), QStringList{QStringLiteral("Quarn.ini")});
}

}  // namespace
}  // namespace quarn
