#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "serial/line_test_support.h"

namespace {

constexpr int kLimitMs = 20000;

class DeviceProcess : public testing::Test {
 protected:
  void Start(const QStringList& arguments) {
    device.start(QStringLiteral(QUARN_DEVICE), arguments);
    ASSERT_TRUE(device.waitForStarted(kLimitMs));
  }
  /// The node that the device prints when it is ready.
  QString Node() {
    while (!device.canReadLine() && device.waitForReadyRead(kLimitMs)) {
    }
    return QString::fromLocal8Bit(device.readLine()).trimmed();
  }
  int ExitCode() {
    EXPECT_TRUE(device.waitForFinished(kLimitMs));
    return device.exitStatus() == QProcess::NormalExit ? device.exitCode() : -1;
  }
  QByteArray Complaint() { return device.readAllStandardError(); }

  QTemporaryDir folder;
  QString link = folder.filePath(QStringLiteral("COM7"));
  QProcess device;
};

TEST_F(DeviceProcess, LinksItsNodeAndTakesTheLinkAwayAtTheEnd) {
  Start({QStringLiteral("--link"), link});
  const QString node = Node();
  EXPECT_TRUE(node.startsWith(QStringLiteral("/dev/"))) << node.toStdString();
  EXPECT_EQ(QFile::symLinkTarget(link), node);
  device.terminate();
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(QFileInfo(link).isSymLink());
}

TEST_F(DeviceProcess, MakesTheFolderOfItsLinkForNobodyElse) {
  link = folder.filePath(QStringLiteral("Halvo/Quarn/ports/COM7"));
  Start({QStringLiteral("--link"), link});
  EXPECT_EQ(QFile::symLinkTarget(link), Node());
  const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser |
                                 QFile::WriteUser | QFile::ExeUser;
  EXPECT_EQ(QFile::permissions(QFileInfo(link).path()), own);
  EXPECT_EQ(QFile::permissions(folder.filePath(QStringLiteral("Halvo"))), own);
  device.terminate();
  EXPECT_EQ(ExitCode(), 0);
}

TEST_F(DeviceProcess, ReplacesAnOldLinkButNothingElse) {
  ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere"), link));
  Start({QStringLiteral("--link"), link});
  EXPECT_EQ(QFile::symLinkTarget(link), Node());
  device.terminate();
  EXPECT_EQ(ExitCode(), 0);
  QFile file(link);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  Start({QStringLiteral("--link"), link});
  EXPECT_EQ(ExitCode(), 1);
  EXPECT_TRUE(Complaint().contains(link.toLocal8Bit()));
  EXPECT_TRUE(QFileInfo(link).isFile());
  // A person's own link to a device.
  ASSERT_TRUE(QFile::remove(link));
  ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), link));
  Start({QStringLiteral("--link"), link});
  EXPECT_EQ(ExitCode(), 1);
  EXPECT_TRUE(Complaint().endsWith(": File exists\n"));
  EXPECT_EQ(QFile::symLinkTarget(link), QStringLiteral("/dev/null"));
}

TEST_F(DeviceProcess, AnIgnoredSignalDoesNotEndIt) {
  device.setChildProcessModifier([] { ::signal(SIGHUP, SIG_IGN); });
  Start({QStringLiteral("--link"), link});
  const QString node = Node();
  // A signal that is blocked and ignored would still end its wait.
  // While a thread is being made, all are blocked for a moment.
  const QString status = QStringLiteral("/proc/%1/status").arg(device.processId());
  EXPECT_TRUE(quarn::Eventually([&status] {
    QFile masks(status);
    static const QRegularExpression withoutHangup(QStringLiteral("SigBlk:\\s*[0-9a-f]*[02468ace]\\s"));
    return masks.open(QIODevice::ReadOnly) &&
           withoutHangup.match(QString::fromLatin1(masks.readAll())).hasMatch();
  }));
  ASSERT_EQ(::kill(static_cast<pid_t>(device.processId()), SIGHUP), 0);
  device.terminate();
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(QFileInfo(link).isSymLink());
}

TEST_F(DeviceProcess, ASignalEndsItWhileItReadsItsRules) {
  const QString pipe = folder.filePath(QStringLiteral("pipe"));
  ASSERT_EQ(::mkfifo(pipe.toLocal8Bit().constData(), S_IRWXU), 0);
  Start({QStringLiteral("--rules"), pipe});
  ASSERT_TRUE(device.waitForStarted());
  device.terminate();
  EXPECT_TRUE(device.waitForFinished());
  EXPECT_EQ(device.exitStatus(), QProcess::CrashExit) << "by the signal itself";
}

TEST_F(DeviceProcess, SaysWhatIsWrongWithTheRules) {
  const QString path = folder.filePath(QStringLiteral("rules"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("\"a\" -> echo\nnonsense\n");
  file.close();
  Start({QStringLiteral("--rules"), path});
  EXPECT_EQ(ExitCode(), 1);
  EXPECT_EQ(Complaint(), "quarn-device: " + path.toLocal8Bit() + ": line 2: a text in quotes is expected\n");
  Start({QStringLiteral("--rules"), QStringLiteral("/dev/zero")});
  EXPECT_EQ(ExitCode(), 1);
  EXPECT_EQ(Complaint(), "quarn-device: /dev/zero: more than 1 MiB\n");
  Start({QStringLiteral("--rules"), folder.filePath(QStringLiteral("none"))});
  EXPECT_EQ(ExitCode(), 1);
  EXPECT_TRUE(Complaint().contains("cannot be read"));
}

/// Kilobytes of memory that are its own.
int OwnMemoryOf(qint64 process) {
  QFile file(QStringLiteral("/proc/%1/status").arg(process));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  for (const QByteArray& line : file.readAll().split('\n')) {
    if (line.startsWith("RssAnon:")) return line.mid(8).trimmed().split(' ').first().toInt();
  }
  ADD_FAILURE() << "no such figure";
  return 0;
}

TEST_F(DeviceProcess, DoesNotGrowWithWhatItHears) {
  Start({});
  QFile line(Node());
  ASSERT_TRUE(line.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
  // The response comes after all earlier bytes were read.
  const auto answers = [&line] {
    EXPECT_EQ(line.write("\rmute\rid\r"), 9);
    QByteArray answer;
    while (!answer.endsWith("firmware 1.00\r")) {
      const QByteArray more = line.read(1);
      if (more.isEmpty()) return false;
      answer += more;
    }
    return true;
  };
  ASSERT_TRUE(answers());
  const int before = OwnMemoryOf(device.processId());
  constexpr int kMegabytes = 8;
  const QByteArray unclosed = "\x02" + QByteArray(1024 * 1024 - 1, 'x');
  for (int i = 0; i < kMegabytes; ++i) {
    for (qsizetype sent = 0; sent < unclosed.size();) {
      const qint64 count = line.write(unclosed.constData() + sent, unclosed.size() - sent);
      ASSERT_GT(count, 0);
      sent += count;
    }
  }
  ASSERT_TRUE(answers());
  EXPECT_LT(OwnMemoryOf(device.processId()) - before, 1024 * kMegabytes / 4);
  device.terminate();
  EXPECT_EQ(ExitCode(), 0);
}

TEST_F(DeviceProcess, WhatItRepeatsSteersNoTerminal) {
  Start({QStringLiteral("--\x1b[2J\u00b5")});
  EXPECT_EQ(ExitCode(), 64);
  EXPECT_TRUE(Complaint().startsWith("quarn-device: unknown argument: --<0x1b>[2J<0xc2><0xb5>\n"));
}

TEST_F(DeviceProcess, WrongUsageIs64) {
  for (const QStringList& arguments :
       {QStringList{QStringLiteral("--nonsense")}, QStringList{QStringLiteral("--link")}}) {
    Start(arguments);
    EXPECT_EQ(ExitCode(), 64);
    EXPECT_TRUE(Complaint().contains("usage:"));
  }
  Start({QStringLiteral("--help")});
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_TRUE(device.readAllStandardOutput().startsWith("usage:"));
}

}  // namespace
