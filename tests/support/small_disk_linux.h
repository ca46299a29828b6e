#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <cstring>

namespace quarn::test {

/// A disk of 64 KiB of the test's own: a real file system that is really full. Who may not mount becomes
/// the owner of a namespace in which they may, as long as the process has one thread.
class SmallDisk {
 public:
  SmallDisk() {
    bool mounted = Mount();
    if (!mounted && errno == EPERM && EnterOwnNamespace()) mounted = Mount();
    m_mounted = mounted;
    EXPECT_TRUE(mounted) << "no small disk: " << std::strerror(errno);
  }
  ~SmallDisk() {
    if (m_mounted) {
      EXPECT_EQ(umount2(QFile::encodeName(m_folder.path()), MNT_DETACH), 0);
    }
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  [[nodiscard]] QString Path(const QString& name) const { return m_folder.filePath(name); }
  [[nodiscard]] QStringList Files() const {
    return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }
  /// Takes all the room that is left.
  void Fill() const {
    QFile filler(Path(QStringLiteral("filler")));
    ASSERT_TRUE(m_mounted);
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const QByteArray page(4096, 'x');
    while (filler.write(page) == page.size()) {
    }
    ASSERT_EQ(filler.error(), QFileDevice::ResourceError) << filler.errorString().toStdString();
  }

 private:
  [[nodiscard]] bool Mount() const {
    return mount("tmpfs", QFile::encodeName(m_folder.path()), "tmpfs", 0, "size=64k") == 0;
  }
  static bool Put(const char* path, const QByteArray& text) {
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
  }
  static bool EnterOwnNamespace() {
    const QByteArray user = QByteArray::number(geteuid());
    const QByteArray group = QByteArray::number(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && Put("/proc/self/setgroups", "deny") &&
           Put("/proc/self/uid_map", "0 " + user + " 1") && Put("/proc/self/gid_map", "0 " + group + " 1");
  }

  QTemporaryDir m_folder;
  bool m_mounted = false;
};

}  // namespace quarn::test
