// The port and its line, as options name them.

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>

#include <QElapsedTimer>

#include "send/send_process.h"
#include "serial/file_descriptor.h"

namespace quarn {
namespace {

class SendLine : public SendProcess {
 protected:
  void ForgetSettings() const { ASSERT_TRUE(QFile::remove(Path("Halvo/Quarn/Quarn.ini"))); }

  /// The state of the line while the program waits on it.
  termios2 StateDuring(const char* arguments) {
    const FileDescriptor line(
        ::open(QFile::encodeName(m_instrument.NodePath()).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    QProcess process;
    const std::size_t before = m_instrument.Received().size();
    Start(process, QStringLiteral(QUARN_SEND), QString::fromLatin1(arguments).split(u' '));
    EXPECT_TRUE(Eventually([&] { return m_instrument.Received().size() > before; }))
        << process.readAllStandardError().constData();
    termios2 state{};
    EXPECT_EQ(::ioctl(line.Get(), TCGETS2, &state), 0);
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(kPatienceMs));
    return state;
  }
};

TEST_F(SendLine, NeedsNoSettingsFile) {
  ForgetSettings();
  const Outcome sent = Send("--port COM7 --bps 115200 id");
  EXPECT_EQ(sent.out, "[id]\nSIM-1\n");
  EXPECT_EQ(sent.err, "");
  EXPECT_EQ(m_instrument.Received(), "id\r") << "the defaults frame with CR";
  EXPECT_FALSE(QFile::exists(Path("Halvo/Quarn/Quarn.ini")));
}

TEST_F(SendLine, NeedsNoFolderForSettings) {
  for (const char* name : {"HOME", "XDG_CONFIG_HOME"})
    environment.insert(QString::fromLatin1(name), QString());
  const Outcome sent = Send({QStringLiteral("--port"), m_instrument.NodePath(), QStringLiteral("--bps"),
                             QStringLiteral("115200"), QStringLiteral("id")});
  EXPECT_EQ(sent.out, "[id]\nSIM-1\n") << sent.err.constData();
}

TEST_F(SendLine, DefaultsLeaveTheSettingsAside) {
  UseSettings({{"DELIMITER=", "STX_ETX"}});
  EXPECT_EQ(Send("--defaults --port COM7 --bps 115200 id").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "id\r");
  EXPECT_EQ(Send("--defaults id").err,
            "quarn-send: no port is chosen; name one with --port (quarn-send --list shows them)\n");
}

TEST_F(SendLine, OptionsSetTheLine) {
  const termios2 fast = StateDuring("--bps 921600 mute");
  EXPECT_EQ(fast.c_ospeed, 921600U);
  EXPECT_EQ(fast.c_cflag & CSTOPB, 0U);
  const termios2 odd = StateDuring("--bps 12345 --stop-bits 2 mute");
  EXPECT_EQ(odd.c_ospeed, 12345U);
  EXPECT_NE(odd.c_cflag & CSTOPB, 0U);
}

TEST_F(SendLine, OptionsSetFramingAndBuffer) {
  EXPECT_EQ(Send("--delimiter lf id").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "id\n");
  EXPECT_EQ(Send("--buffer 1K big").exitCode, 3);
  EXPECT_EQ(Send("--buffer 2K big").exitCode, 0);
}

TEST_F(SendLine, ARateThatIsReplacedIsTold) {
  UseSettings({{"COM_BPS=", "460800"}});
  const Outcome sent = Send("id");
  EXPECT_EQ(sent.exitCode, 0);
  EXPECT_EQ(sent.err,
            "quarn-send: the settings name 460800 bps, which they do not offer; the line runs at 9600 (--bps "
            "sets any "
            "rate)\n");
  EXPECT_EQ(Send("--bps 460800 id").err, "");
}

TEST_F(SendLine, HasATimeoutOfItsOwn) {
  // Without a time-out by the rule, and with one of 30 s.
  for (const char* rule : {"OFF", "ON"}) {
    UseSettings({{"R_TIMEOUT=", rule}, {"COM_BPS=", "9600"}, {"COM_BUF=", "1K"}});
    QElapsedTimer timer;
    timer.start();
    const Outcome sent = Send("--timeout 0.3 mute");
    EXPECT_EQ(sent.exitCode, 1);
    EXPECT_EQ(sent.out, "[mute]\nError: Response Timeout Error\n\n");
    EXPECT_GE(timer.elapsed(), 300);
  }
}

TEST_F(SendLine, ALongerTimeoutThanTheRulesHolds) {
  UseSettings({{"R_TIMEOUT=", "ON"}, {"COM_BPS=", "115200"}, {"COM_BUF=", "6K"}});
  EXPECT_EQ(Send("late").exitCode, 1);
  EXPECT_EQ(Send("--timeout 60 late").out, "[late]\nSIM-1\n");
}

TEST_F(SendLine, APortHasManyNames) {
  ASSERT_TRUE(QFile::link(m_instrument.NodePath(), Path("by-id")));
  for (const QString& name : {QStringLiteral("COM7"), QStringLiteral("com7"), m_instrument.NodePath(),
                              Path("by-id"), QDir::current().relativeFilePath(Path("by-id"))}) {
    const Outcome sent = Send({QStringLiteral("--port"), name, QStringLiteral("id")});
    EXPECT_EQ(sent.out, "[id]\nSIM-1\n") << name.toStdString() << ": " << sent.err.constData();
  }
}

TEST_F(SendLine, WhatIsNoTerminalDeviceIsNoPort) {
  for (const QString& name :
       {QStringLiteral("/dev/null"), QStringLiteral("/dev/ptmx"), Path("Halvo"), Path("none")}) {
    const Outcome sent = Send({QStringLiteral("--port"), name, QStringLiteral("id")});
    EXPECT_EQ(sent.exitCode, 5);
    EXPECT_EQ(sent.err, "quarn-send: " + name.toUtf8() +
                            " is not present; quarn-send --list shows the ports that are\n");
  }
  UseSettings({{"COM_PORT=", m_instrument.NodePath().toLatin1()}});
  EXPECT_EQ(Send("id").exitCode, 5) << "settings name a number";
}

}  // namespace
}  // namespace quarn
