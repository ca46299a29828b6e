#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>
#include <thread>

#include "settings/key_store.h"
#include "settings/settings_load_save.h"
#include "settings/settings_table.h"
#include "settings/settings_test_support.h"
#include "settings/working_file.h"

// Permissions do not stop root. So writes fail at the largest size of a file, which holds for root too, and
// permissions are compared.
namespace quarn {
namespace {

using KeyStoreLinux = SettingsFileTest;

/// While it exists, no file can grow beyond `bytes`: a write fails as on a full disk.
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
  // A program that has the old file open still reads the old bytes: they were not overwritten.
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

TEST_F(KeyStoreLinux, ALinkWhoseTargetIsNoTextIsReadAndNotWritten) {
  const QByteArray real = Utf8(Path(QStringLiteral("caf"))) + "\xe9";
  const QByteArray text = ".BEGIN\nMEM0=old\n.END\n";
  const int file = ::open(real.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(::write(file, text.constData(), static_cast<std::size_t>(text.size())), text.size());
  ::close(file);
  const QString link = Path(QStringLiteral("link"));
  ASSERT_EQ(symlink(real, Utf8(link)), 0);
  EXPECT_EQ(ReadValue(link, keys::kMem[0]), QStringLiteral("old"));
  EXPECT_FALSE(WriteWholeText(link, QStringLiteral("new")));
  EXPECT_EQ(ReadValue(link, keys::kMem[0]), QStringLiteral("old"));
  EXPECT_TRUE(QFileInfo(link).isSymLink());
  ::unlink(real);  // nothing of Qt's can
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
  // Root can write here. For both the file must be complete and the result true.
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

/// Another thread that reads the file again and again.
class Reader {
 public:
  Reader(QString path, QByteArray before, QByteArray after)
      : m_path(std::move(path)), m_before(std::move(before)), m_after(std::move(after)) {}
  ~Reader() {
    m_stop = true;
    m_thread.join();
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Whether it has seen both files often, or anything else once.
  [[nodiscard]] bool HasSeenEnough() const {
    constexpr int kOften = 50;
    return m_others > 0 || (m_befores >= kOften && m_afters >= kOften);
  }
  [[nodiscard]] int Others() const { return m_others; }

 private:
  void Run() {
    while (!m_stop) {
      const QByteArray bytes = ReadWholeBytes(m_path).value_or("no file");
      ++(bytes == m_before ? m_befores : bytes == m_after ? m_afters : m_others);
    }
  }

  const QString m_path;
  const QByteArray m_before;
  const QByteArray m_after;
  std::atomic<bool> m_stop = false;
  std::atomic<int> m_befores = 0;
  std::atomic<int> m_afters = 0;
  std::atomic<int> m_others = 0;
  std::thread m_thread{[this] { Run(); }};
};

/// A reader finds the file as before the operation or as after it, at every moment.
void ExpectNothingBetween(const QString& path, const std::function<void()>& operation) {
  const auto replace = [&path](const QByteArray& bytes) {
    const QString other = path + QStringLiteral(".other");
    QFile file(other);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
    file.close();
    ASSERT_EQ(std::rename(Utf8(other).constData(), Utf8(path).constData()), 0);
  };
  const QByteArray before = ReadWholeBytes(path).value();
  operation();
  const QByteArray after = ReadWholeBytes(path).value();
  ASSERT_NE(before, after);
  const Reader reader(path, before, after);
  while (!reader.HasSeenEnough()) {
    replace(before);
    operation();
  }
  EXPECT_EQ(reader.Others(), 0);
}

TEST_F(KeyStoreLinux, ALoadTakesTheValuesOfOneMoment) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord one;
  ASSERT_EQ(LoadSettings(path, one), LoadResult::Loaded);
  SettingsRecord other = one;
  other.comBits = QStringLiteral("7");
  other.startDisp = QStringLiteral("OFF");
  std::atomic<bool> isOver = false;
  std::thread writer([&] {
    for (bool first = false; !isOver; first = !first) SaveAllSettings(path, first ? one : other);
  });
  constexpr int kEnough = 50;
  int ones = 0;
  int others = 0;
  int mixed = 0;
  while ((ones < kEnough || others < kEnough) && mixed == 0) {
    SettingsRecord loaded = one;
    EXPECT_EQ(LoadSettings(path, loaded), LoadResult::Loaded);
    const bool isOther = loaded.comBits == other.comBits;
    ++(isOther ? others : ones);
    if (isOther != (loaded.startDisp == other.startDisp)) ++mixed;
  }
  isOver = true;
  writer.join();
  EXPECT_EQ(mixed, 0);
}

TEST_F(KeyStoreLinux, AReaderNeverSeesHalfOfAnOperation) {
  const QString path = WithBytes(NormalisedBytes(SortedDefaults()));
  SettingsRecord record;
  ASSERT_EQ(LoadSettings(path, record), LoadResult::Loaded);
  record.comBits = QStringLiteral("7");
  record.mem[9] = QStringLiteral("last");
  ExpectNothingBetween(path, [&] { EXPECT_TRUE(SaveAllSettings(path, record)); });
  EXPECT_EQ(ReadValue(path, keys::kComBits), QStringLiteral("7"));
  EXPECT_EQ(ReadValue(path, keys::kMem[9]), QStringLiteral("last"));

  ExpectNothingBetween(path, [&] { EXPECT_TRUE(UpdateValue(path, keys::kComPort, QStringLiteral("COM3"))); });
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));

  WithBytes(QByteArray(".BEGIN\nA=1\nB=2\nC=3\nCOM_PORT=COM3\n.END\n"));
  ExpectNothingBetween(path, [&] { EXPECT_TRUE(UpgradeFile(path, CompareWithDefaults(path))); });
  EXPECT_EQ(ReadValue(path, keys::kComPort), QStringLiteral("COM3"));
}

}  // namespace
}  // namespace quarn
