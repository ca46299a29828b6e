#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDir>
#include <cstring>

#include "app/start_requests_fixture.h"

namespace quarn::test {
namespace {

const QString kFile = QStringLiteral("/a.qrn");

/// The sockets of the receiver.
class StartRequestsSockets : public StartRequestsTest {
 protected:
  [[nodiscard]] QString InSession() const { return m_session.filePath(QStringLiteral("Quarn.exe.requests")); }
  [[nodiscard]] QString InSettings() const {
    return m_settings.filePath(QStringLiteral("Halvo/Quarn/Quarn.exe.requests"));
  }
  static mode_t ModeOf(const QString& path) {
    struct stat info {};
    EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
    return info.st_mode;
  }
  static bool Exists(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0;
  }
  /// As a crashed program leaves it.
  static void LeaveSocket(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(static_cast<std::size_t>(name.size()), sizeof address.sun_path);
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
  }
  /// A folder whose path is longer than that of a socket can be.
  static QString LongFolder(const QTemporaryDir& above) {
    QString folder = above.filePath(QString(60, u'l') + u'/' + QString(60, u'l'));
    EXPECT_TRUE(QDir().mkpath(folder));
    EXPECT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    return folder;
  }
};

TEST_F(StartRequestsSockets, AreReachedFromAnotherSessionBesideTheSettings) {
  Listen();
  const QTemporaryDir other;
  UseSession(other.path());
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, QStringList{kFile});
}

TEST_F(StartRequestsSockets, AreReachedFromOtherSettingsInTheSession) {
  Listen();
  const QTemporaryDir other;
  UseSettings(other.path());
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, QStringList{kFile});
}

TEST_F(StartRequestsSockets, AreReachedPastOneThatACrashedProgramLeft) {
  Listen();
  const QTemporaryDir other;
  UseSession(other.path());
  LeaveSocket(other.filePath(QStringLiteral("Quarn.exe.requests")));
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, QStringList{kFile});
}

TEST_F(StartRequestsSockets, ReplaceThoseThatACrashedProgramLeft) {
  LeaveSocket(InSession());
  ASSERT_TRUE(QDir().mkpath(m_settings.filePath(QStringLiteral("Halvo/Quarn"))));
  LeaveSocket(InSettings());
  Listen();
  EXPECT_TRUE(Ask(kFile));
  const QTemporaryDir other;
  UseSession(other.path());
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, (QStringList{kFile, kFile}));
}

TEST_F(StartRequestsSockets, LeaveAProgramThatListensAlone) {
  Listen();
  const QTemporaryDir other;
  {
    // Only where neither could lock the settings do two run.
    UseSession(other.path());
    const StartRequests second([](const QString&) { FAIL() << "it is for the first one"; });
    const QTemporaryDir third;
    UseSession(third.path());
    EXPECT_TRUE(Ask(kFile));
  }
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, (QStringList{kFile, kFile}));
}

TEST_F(StartRequestsSockets, LeaveAFileOfThatNameAlone) {
  QFile file(InSession());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  Listen();
  EXPECT_TRUE(Ask(kFile));
  m_requests.reset();
  EXPECT_TRUE(file.exists());
}

TEST_F(StartRequestsSockets, AreTheUsersAloneWhateverTheUserGrantsByDefault) {
  const mode_t former = ::umask(0);
  Listen();
  ::umask(former);
  EXPECT_EQ(ModeOf(InSession()), static_cast<mode_t>(S_IFSOCK | 0600));
  EXPECT_EQ(ModeOf(InSettings()), static_cast<mode_t>(S_IFSOCK | 0600));
}

TEST_F(StartRequestsSockets, AreGoneAfterwards) {
  Listen();
  EXPECT_TRUE(Exists(InSession()));
  EXPECT_TRUE(Exists(InSettings()));
  m_requests.reset();
  EXPECT_FALSE(Exists(InSession()));
  EXPECT_FALSE(Exists(InSettings()));
}

TEST_F(StartRequestsSockets, HavePathsOfAnyLength) {
  const QTemporaryDir above;
  const QTemporaryDir other;
  UseSession(LongFolder(above));
  UseSettings(LongFolder(m_settings));
  Listen();
  EXPECT_TRUE(Ask(kFile));
  UseSession(other.path());
  EXPECT_TRUE(Ask(kFile));
  EXPECT_EQ(m_asked, (QStringList{kFile, kFile}));
  m_requests.reset();
  UseSession(LongFolder(above));
  EXPECT_FALSE(AskRunningProgram(kFile));
  EXPECT_FALSE(Exists(above.filePath(QString(60, u'l') + u'/' + QString(60, u'l')) +
                      QStringLiteral("/Quarn.exe.requests")));
}

}  // namespace
}  // namespace quarn::test
