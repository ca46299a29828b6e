#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>

#include "device/pseudo_terminal.h"
#include "serial/file_descriptor.h"
#include "serial/holder.h"
#include "serial/line_test_support.h"
#include "serial/open_line_linux.h"
#include "serial/open_terminal_linux.h"

namespace quarn {
namespace {

class LinuxLineOpen : public testing::Test {
 protected:
  [[nodiscard]] QString Path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
  [[nodiscard]] QString Node() const { return QString::fromStdString(m_far.NodePath()); }
  void Link(const char* name, const QString& target) const { ASSERT_TRUE(QFile::link(target, Path(name))); }
  OpenResult OpenPortNamed(const char* name) const {
    return LinuxLineOpener(m_folder.path()).Open(QString::fromLatin1(name));
  }

  QTemporaryDir m_folder;
  device::PseudoTerminal m_far;
};

QStringList AsOrdinaryUser() {
  return ::geteuid() == 0 ? QStringList{QStringLiteral("--as-nobody")} : QStringList();
}

/// The error when an ordinary user's program without locks opens the device; 0: it succeeded.
int ErrorOfAPlainOpen(const std::string& node) {
  constexpr uid_t kNobody = 65534;
  constexpr int kNotOrdinary = 200;
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && ::setuid(kNobody) != 0) ::_exit(kNotOrdinary);
    ::_exit(::open(node.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC) < 0 ? errno : 0);
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(LinuxLineOpen, ASecondOpenInTheSameProcessFindsTheLineInUse) {
  const OpenResult first = OpenTerminalDevice(Node());
  ASSERT_TRUE(first.line) << first.failure.reason.toStdString();
  const OpenResult second = OpenTerminalDevice(Node());
  EXPECT_FALSE(second.line);
  EXPECT_EQ(second.failure.kind, LineError::InUse);
  EXPECT_EQ(second.failure.reason, Node() + QStringLiteral(": in use by another program"));
}

TEST_F(LinuxLineOpen, AfterCloseTheLineIsFreeAgain) {
  const OpenResult first = OpenTerminalDevice(Node());
  ASSERT_TRUE(first.line);
  EXPECT_TRUE(first.line->Close());
  EXPECT_TRUE(OpenTerminalDevice(Node()).line);
}

/// How others see this process.
QString UseByThisProcess() {
  QFile name(QStringLiteral("/proc/self/comm"));
  EXPECT_TRUE(name.open(QIODevice::ReadOnly));
  return QStringLiteral("in use by %1 (PID %2)")
      .arg(QString::fromLatin1(name.readAll()).trimmed())
      .arg(::getpid());
}

TEST_F(LinuxLineOpen, AnotherProcessFindsTheLineInUse) {
  const OpenResult mine = OpenTerminalDevice(Node());
  ASSERT_TRUE(mine.line);
  EXPECT_EQ(Holder(Node()).Outcome(), QStringLiteral("in-use %1: %2").arg(Node(), UseByThisProcess()));
}

TEST_F(LinuxLineOpen, ASerialDeviceThatAnotherProgramHasOpenWithoutALockIsInUse) {
  {
    Holder holder(Node(), {QStringLiteral("--plain")});
    ASSERT_EQ(holder.Outcome(), QStringLiteral("open"));
    const OpenResult refused = OpenTerminalDeviceAs(Node(), TerminalKind::Uart);
    EXPECT_FALSE(refused.line);
    EXPECT_EQ(refused.failure.kind, LineError::InUse);
    EXPECT_EQ(refused.failure.reason, Node() + QStringLiteral(": ") + holder.Use());
    // The program at the far end may keep the near end open.
    EXPECT_TRUE(OpenTerminalDevice(Node()).line);
  }
  const OpenResult opened = OpenTerminalDeviceAs(Node(), TerminalKind::Uart);
  EXPECT_TRUE(opened.line) << opened.failure.reason.toStdString();
}

TEST_F(LinuxLineOpen, ASerialDeviceThatThisProgramHasOpenIsNotInUse) {
  const FileDescriptor own(::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  EXPECT_TRUE(OpenTerminalDeviceAs(Node(), TerminalKind::Uart).line);
}

TEST_F(LinuxLineOpen, ALineThatAnotherProcessHoldsIsInUseUntilItEnds) {
  {
    Holder holder(Node());
    ASSERT_EQ(holder.Outcome(), QStringLiteral("open"));
    const LineFailure failure = OpenTerminalDevice(Node()).failure;
    EXPECT_EQ(failure.kind, LineError::InUse);
    EXPECT_EQ(failure.reason, Node() + QStringLiteral(": ") + holder.Use());
  }
  EXPECT_TRUE(OpenTerminalDevice(Node()).line);
}

TEST_F(LinuxLineOpen, AKilledProcessLeavesTheLineFree) {
  Holder holder(Node());
  ASSERT_EQ(holder.Outcome(), QStringLiteral("open"));
  holder.Kill();
  ASSERT_TRUE(holder.WasKilled());
  const OpenResult mine = OpenTerminalDevice(Node());
  EXPECT_TRUE(mine.line) << mine.failure.reason.toStdString();
}

TEST_F(LinuxLineOpen, AProgramThatOnlyLocksTheDeviceIsRespected) {
  const FileDescriptor other(::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(OpenTerminalDevice(Node()).failure.kind, LineError::InUse);
}

TEST_F(LinuxLineOpen, TheLockKeepsOthersOutWhileTheLineIsOpen) {
  const OpenResult mine = OpenTerminalDevice(Node());
  ASSERT_TRUE(mine.line);
  const FileDescriptor other(::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(other.IsValid());
  EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
}

// The mark has no effect on an administrator, so this is tried as an ordinary user.

TEST_F(LinuxLineOpen, AProgramThatOnlyMarksTheDeviceIsRespected) {
  const FileDescriptor other(::open(m_far.NodePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_EQ(::ioctl(other.Get(), TIOCEXCL), 0);
  ASSERT_EQ(::chmod(m_far.NodePath().c_str(), 0666), 0);
  const QString inUse = QStringLiteral("in-use %1: in use by another program").arg(Node());
  EXPECT_EQ(Holder(Node(), AsOrdinaryUser()).Outcome(), inUse);
  ASSERT_EQ(::ioctl(other.Get(), TIOCNXCL), 0);
  EXPECT_EQ(Holder(Node(), AsOrdinaryUser()).Outcome(), QStringLiteral("open"));
}

TEST_F(LinuxLineOpen, TheMarkKeepsOthersOutOfAUartWhileItIsOpen) {
  ASSERT_EQ(::chmod(m_far.NodePath().c_str(), 0666), 0);
  const OpenResult mine = OpenTerminalDeviceAs(Node(), TerminalKind::Uart);
  ASSERT_TRUE(mine.line) << mine.failure.reason.toStdString();
  EXPECT_EQ(ErrorOfAPlainOpen(m_far.NodePath()), EBUSY);
  EXPECT_TRUE(mine.line->Close());
  EXPECT_EQ(ErrorOfAPlainOpen(m_far.NodePath()), 0);
}

TEST_F(LinuxLineOpen, WithoutPermissionTheReasonSaysSo) {
  if (::geteuid() == 0) {
    ASSERT_EQ(::chmod(m_far.NodePath().c_str(), 0600), 0);
    const QString outcome = Holder(Node(), {QStringLiteral("--as-nobody")}).Outcome();
    EXPECT_EQ(outcome, QStringLiteral("no-permission %1: no permission").arg(Node()));
    return;
  }
  ASSERT_EQ(::chmod(m_far.NodePath().c_str(), 0), 0);
  const OpenResult opened = OpenTerminalDevice(Node());
  EXPECT_EQ(opened.failure.kind, LineError::NoPermission);
  EXPECT_EQ(opened.failure.reason, Node() + QStringLiteral(": no permission"));
}

TEST_F(LinuxLineOpen, WhatIsNoTerminalIsRefusedWithItsName) {
  QFile file(Path("file"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(::mkfifo(QFile::encodeName(Path("pipe")).constData(), 0600), 0);
  for (const QString& path : {Path("file"), Path("pipe"), m_folder.path(), QStringLiteral("/dev/null"),
                              Path("missing"), Path("file") + QStringLiteral("/below")}) {
    const OpenResult opened = OpenTerminalDevice(path);
    EXPECT_FALSE(opened.line) << path.toStdString();
    EXPECT_EQ(opened.failure.kind, LineError::NotFound) << path.toStdString();
    EXPECT_TRUE(opened.failure.reason.startsWith(path + QStringLiteral(": ")))
        << opened.failure.reason.toStdString();
    EXPECT_GT(opened.failure.reason.size(), path.size() + 2);
  }
}

TEST_F(LinuxLineOpen, APipeIsRefusedWithoutWaitingForItsOtherEnd) {
  ASSERT_EQ(::mkfifo(QFile::encodeName(Path("pipe")).constData(), 0600), 0);
  auto opening = InThread([this] { return OpenTerminalDevice(Path("pipe")); });
  ASSERT_TRUE(Ends(opening));
  EXPECT_FALSE(opening.get().line);
}

TEST_F(LinuxLineOpen, APortIsALinkInTheFolder) {
  Link("COM3", Node());
  Link("COM12", Path("COM3"));
  EXPECT_TRUE(OpenPortNamed("COM3").line);
  EXPECT_TRUE(OpenPortNamed("\\\\.\\COM12").line);
  EXPECT_TRUE(OpenPortNamed("COM12").line);
}

TEST_F(LinuxLineOpen, APortWithoutALinkOrWithABrokenOneIsNoTerminalDevice) {
  Link("COM4", Path("nowhere"));
  Link("COM5", QStringLiteral("/dev/null"));
  Link("COM6", Path("COM6"));
  QFile file(Path("COM7"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("COM8")));
  for (const char* name : {"COM1", "COM4", "COM5", "COM6", "COM7", "COM8"}) {
    const OpenResult opened = OpenPortNamed(name);
    EXPECT_FALSE(opened.line) << name;
    EXPECT_EQ(opened.failure.kind, LineError::NotFound) << name;
    EXPECT_EQ(opened.failure.reason, QString::fromLatin1(name) + QStringLiteral(" is no terminal device"));
  }
}

TEST_F(LinuxLineOpen, ANameCannotLeaveTheFolder) {
  for (const QString& name : {QString(), QStringLiteral("."), QStringLiteral(".."), Node(),
                              QStringLiteral("../") + QFileInfo(Node()).fileName()}) {
    EXPECT_FALSE(LinuxLineOpener(m_folder.path()).Open(name).line) << name.toStdString();
  }
}

TEST_F(LinuxLineOpen, EveryOperationFailsAfterClose) {
  const OpenResult opened = OpenTerminalDevice(Node());
  ASSERT_TRUE(opened.line);
  SerialLine& line = *opened.line;
  EXPECT_TRUE(line.Close());
  EXPECT_TRUE(line.Close()) << "closing twice does no harm";
  line.AllowIo();
  LineState state;
  char byte = 'x';
  const LineFailure closed{LineError::Disconnected, Node() + QStringLiteral(": closed")};
  const auto saysClosed = [&](const LineFailure& failure) {
    return failure.kind == closed.kind && failure.reason == closed.reason;
  };
  const IoResult written = line.Write(&byte, 1);
  EXPECT_FALSE(written.ok);
  EXPECT_TRUE(saysClosed(written.failure));
  line.CancelIo();
  const IoResult read = line.Read(&byte, 1);
  EXPECT_FALSE(read.ok);
  EXPECT_TRUE(saysClosed(read.failure)) << "closed for good is more than cancelled for now";
  for (const LineResult& result :
       {line.GetState(state), line.SetState({}), line.SetTimeouts({}), line.Purge(), line.ClearError()}) {
    EXPECT_FALSE(result);
    EXPECT_TRUE(saysClosed(result.Failure()));
  }
}

}  // namespace
}  // namespace quarn
