#include "app/platform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <csignal>

#include "support/waits.h"

namespace quarn {
namespace {

using namespace Qt::StringLiterals;

constexpr uid_t kNobody = 65534;

InstanceLock Take() {
  QString reason;
  return TakeInstanceLock(reason);
}

/// Sets the session's folder and the folder of the settings in the environment, for one test.
class InstanceLockTest : public ::testing::Test {
 protected:
  InstanceLockTest() {
    UseFolder(m_folder.path());
    Set("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
  }
  ~InstanceLockTest() override {
    Set("XDG_RUNTIME_DIR", m_formerRuntime);
    Set("XDG_CONFIG_HOME", m_formerConfig);
    Set("HOME", m_formerHome);
  }
  static void Set(const char* name, const QByteArray& value) {
    value.isNull() ? qunsetenv(name) : qputenv(name, value);
  }
  static void UseFolder(const QString& folder) { Set("XDG_RUNTIME_DIR", QFile::encodeName(folder)); }
  [[nodiscard]] QString LockInSettings() const {
    return m_config.filePath(QStringLiteral("Halvo/Quarn/Quarn.exe.lock"));
  }
  void ExpectTakenInSettings() const {
    const int child = ::fork();
    if (child == 0) ::_exit(Take() == InstanceLock::Taken ? 0 : 1);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(QFile::exists(LockInSettings()));
    QFile::remove(LockInSettings());
  }

  QTemporaryDir m_folder;
  QTemporaryDir m_config;

 private:
  const QByteArray m_formerRuntime = qgetenv("XDG_RUNTIME_DIR");
  const QByteArray m_formerConfig = qgetenv("XDG_CONFIG_HOME");
  const QByteArray m_formerHome = qgetenv("HOME");
};

/// Another process that has taken the lock.
class Holder {
 public:
  Holder() {
    int ends[2] = {};
    EXPECT_EQ(::pipe(ends), 0);
    m_process = ::fork();
    if (m_process == 0) {
      const char result = Take() == InstanceLock::Taken ? 'y' : 'n';
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

/// The items of the context menu that a click with the right button opens.
QStringList ItemsOnRightClick(QDialog& dialog) {
  QStringList shown;
  QTimer::singleShot(0, &dialog, [&shown] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) return;
    for (const QAction* each : menu->actions()) shown.append(each->text());
    menu->close();
  });
  const QPoint place = dialog.rect().center();
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, dialog.mapToGlobal(place));
  QApplication::sendEvent(&dialog, &event);
  return shown;
}

TEST(WindowMenuItem, HasItsPlainTextOnlyWhereNoFontShowsTheOther) {
  const char32_t free = 0x10FFFD;  // for private use: no font has it
  const QString unknown = u"Quarn"_s + QString::fromUcs4(&free, 1);
  QDialog dialog;
  int chosen = 0;
  AddWindowMenuItem(dialog, u"Größe (&A)..."_s, u"Size(&A)..."_s, [] {});
  AddWindowMenuItem(dialog, unknown, u"About Quarn(&A)..."_s, [&chosen] { ++chosen; });
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, test::kLongestWaitMs));
  EXPECT_EQ(dialog.actions().last()->text(), unknown) << "the fonts were asked too early";
  EXPECT_EQ(ItemsOnRightClick(dialog), (QStringList{u"Größe (&A)..."_s, u"About Quarn(&A)..."_s}));
  EXPECT_EQ(ItemsOnRightClick(dialog), (QStringList{u"Größe (&A)..."_s, u"About Quarn(&A)..."_s}));
  dialog.actions().last()->trigger();
  EXPECT_EQ(chosen, 1);
}

TEST_F(InstanceLockTest, IsTakenByOneProcessAtATime) {
  Holder holder;
  EXPECT_EQ(Take(), InstanceLock::TakenByAnother);
  EXPECT_EQ(Take(), InstanceLock::TakenByAnother);
}

TEST_F(InstanceLockTest, IsFreeAgainHoweverItsHolderEnds) {
  Holder holder;
  holder.Kill();
  EXPECT_EQ(Take(), InstanceLock::Taken);
}

TEST_F(InstanceLockTest, LiesInAFileOfTheUserAlone) {
  ASSERT_EQ(Take(), InstanceLock::Taken);
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
  EXPECT_EQ(Take(), InstanceLock::Taken);
  ::umask(before);
  struct stat info {};
  ASSERT_EQ(::stat(QFile::encodeName(folder).constData(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777U, 0700U);
}

TEST_F(InstanceLockTest, LiesBesideTheSettingsWhereTheSessionHasNoFolder) {
  for (const QByteArray& useless :
       {QByteArray(), QByteArray(""), QByteArray("relative"), QByteArray("/no/such")}) {
    Set("XDG_RUNTIME_DIR", useless);
    ExpectTakenInSettings();
  }
  EXPECT_FALSE(QFile::exists(QStringLiteral("relative")));
}

TEST_F(InstanceLockTest, IsSeenFromASessionThatHasNoFolder) {
  Holder holder;
  Set("XDG_RUNTIME_DIR", QByteArray());
  EXPECT_EQ(Take(), InstanceLock::TakenByAnother);
}

TEST_F(InstanceLockTest, IsSeenFromASessionThatHasAFolder) {
  Set("XDG_RUNTIME_DIR", QByteArray());
  Holder holder;
  UseFolder(m_folder.path());
  EXPECT_EQ(Take(), InstanceLock::TakenByAnother);
}

TEST_F(InstanceLockTest, NeedsNoSettingsThatCanBeWritten) {
  for (const QByteArray& useless : {QByteArray("/proc/self/no/such"), QByteArray("/dev/null")}) {
    Set("XDG_CONFIG_HOME", useless);
    Holder holder;
    EXPECT_EQ(Take(), InstanceLock::TakenByAnother);
  }
}

TEST_F(InstanceLockTest, NeedsNoPlaceThatAnotherUserCouldTakeFirst) {
  // The folder for temporary files of all users has no influence.
  Set("XDG_RUNTIME_DIR", QByteArray());
  const QTemporaryDir everybodys;
  const QByteArray before = qgetenv("TMPDIR");
  qputenv("TMPDIR", QFile::encodeName(everybodys.path()));
  ASSERT_EQ(::chmod(QFile::encodeName(everybodys.path()).constData(), 0), 0);
  ExpectTakenInSettings();
  Set("TMPDIR", before);
  ASSERT_EQ(::chmod(QFile::encodeName(everybodys.path()).constData(), 0700), 0);
  EXPECT_TRUE(QDir(everybodys.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

TEST_F(InstanceLockTest, DoesNotUseTheRuntimeFolderOfAnotherUser) {
  QString foreign = QStringLiteral("/");
  if (::geteuid() == 0) {
    foreign = m_folder.path();
    ASSERT_EQ(::chown(QFile::encodeName(foreign).constData(), kNobody, kNobody), 0);
  }
  UseFolder(foreign);
  ExpectTakenInSettings();
  EXPECT_FALSE(QFile::exists(foreign + QStringLiteral("/Quarn.exe.lock")));
}

TEST_F(InstanceLockTest, DoesNotUseARuntimeFolderThatOthersMayWriteTo) {
  ASSERT_EQ(::chmod(QFile::encodeName(m_folder.path()).constData(), 0777), 0);
  ExpectTakenInSettings();
  EXPECT_FALSE(QFile::exists(m_folder.filePath(QStringLiteral("Quarn.exe.lock"))));
}

TEST_F(InstanceLockTest, SaysWhyItFails) {
  ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("Quarn.exe.lock")));
  QString reason;
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Failed);
  EXPECT_EQ(reason, m_folder.filePath(QStringLiteral("Quarn.exe.lock: Is a directory")));
  Set("XDG_RUNTIME_DIR", QByteArray());
  // Not even an administrator makes a folder there.
  Set("XDG_CONFIG_HOME", "/sys");
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Failed);
  EXPECT_TRUE(reason.startsWith(QStringLiteral("/sys/Halvo/Quarn"))) << reason.toStdString();
  EXPECT_FALSE(reason.contains(QStringLiteral("No such file"))) << reason.toStdString();
  Set("XDG_CONFIG_HOME", QByteArray());
  Set("HOME", ".");
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Failed);
  EXPECT_TRUE(reason.contains(QStringLiteral("HOME"))) << reason.toStdString();
}

TEST_F(InstanceLockTest, FollowsNoLink) {
  const QString target = m_folder.filePath(QStringLiteral("elsewhere"));
  ASSERT_TRUE(QFile::link(target, m_folder.filePath(QStringLiteral("Quarn.exe.lock"))));
  EXPECT_EQ(Take(), InstanceLock::Failed);
  EXPECT_FALSE(QFile::exists(target));
}

/// QT_SCALE_FACTOR as a person has set it, or not at all.
class ScaleFactor {
 public:
  explicit ScaleFactor(const QByteArray& value) { Set(value); }
  ~ScaleFactor() { Set(m_former); }
  ScaleFactor(const ScaleFactor&) = delete;
  ScaleFactor& operator=(const ScaleFactor&) = delete;

 private:
  static void Set(const QByteArray& value) {
    value.isNull() ? qunsetenv("QT_SCALE_FACTOR") : qputenv("QT_SCALE_FACTOR", value);
  }
  const QByteArray m_former = qgetenv("QT_SCALE_FACTOR");
};

TEST(HowToStart, NamesTheFactorThatLeadsToASupportedScaling) {
  const ScaleFactor none{QByteArray()};
  EXPECT_EQ(HowToStartAtScaling(200),
            u"quarn: it does not start at a scaling of 200 per cent; to start it at 150: "
            "QT_SCALE_FACTOR=0.75 quarn\n"_s);
  EXPECT_TRUE(HowToStartAtScaling(124).contains(u"at 100: QT_SCALE_FACTOR=0.8065 quarn"_s));
  EXPECT_EQ(HowToStartAtScaling(0), QString());
}

TEST(HowToStart, ReckonsWithAFactorThatIsSet) {
  {
    const ScaleFactor twice("2");
    EXPECT_TRUE(HowToStartAtScaling(200).contains(u"QT_SCALE_FACTOR=1.5 quarn"_s));
  }
  for (const char* none : {"", "0", "large"}) {
    const ScaleFactor useless(none);
    EXPECT_TRUE(HowToStartAtScaling(200).contains(u"QT_SCALE_FACTOR=0.75 quarn"_s)) << none;
  }
}

TEST(FileArgument, IsTheFirstArgument) {
  EXPECT_EQ(ReadFileArgument({u"quarn"_s}), QString());
  EXPECT_EQ(ReadFileArgument({u"quarn"_s, u"my file.qrn"_s, u"other.qrn"_s}), u"my file.qrn"_s);
  EXPECT_DEATH((void)ReadFileArgument({u"quarn"_s, QString(259, u'x')}), "command line");
}

}  // namespace
}  // namespace quarn
