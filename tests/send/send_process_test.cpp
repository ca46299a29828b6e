#include "send/send_process.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QThread>
#include <csignal>

#include "serial/file_descriptor.h"

#ifdef __SANITIZE_THREAD__
// Starting a program shares this one's memory for a moment. The thread sanitizer then treats this process as
// a forked copy, which must not start threads.
extern "C" const char* __tsan_default_options() { return "die_after_fork=0"; }
#endif

namespace quarn {
namespace {

TEST_F(SendProcess, PrintsCommandAndResponseAsTheLogShowsThem) {
  const Outcome sent = Send("id bytes");
  EXPECT_EQ(sent.out, "[id]\nSIM-1\n[bytes]\n<STX>A<ENG>\n<DEL><0xff>\n");
  EXPECT_EQ(sent.err, "");
  EXPECT_EQ(sent.exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "id\r\nbytes\r\n");
}

TEST_F(SendProcess, ATimeoutIsOne) {
  UseSettings({{"COM_BPS=", "115200"}, {"COM_BUF=", "6K"}, {"R_TIMEOUT=", "ON"}});
  const Outcome sent = Send("mute");
  EXPECT_EQ(sent.exitCode, 1);
  EXPECT_EQ(sent.out, "[mute]\nError: Response Timeout Error\n\n");
}

TEST_F(SendProcess, AnEmptyResponseIsTwo) {
  const Outcome sent = Send("empty");
  EXPECT_EQ(sent.exitCode, 2);
  EXPECT_EQ(sent.out, "[empty]\nError: Received Invalid Data\n\n");
}

TEST_F(SendProcess, ATruncatedResponseIsThree) {
  const Outcome sent = Send("big");
  EXPECT_EQ(sent.exitCode, 3);
  EXPECT_TRUE(sent.out.endsWith("\n...\nError: Receive Buffer Overflow > 1500 (MAX. 1024)\n\n"))
      << sent.out.constData();
}

TEST_F(SendProcess, TheLastCommandDecides) {
  EXPECT_EQ(Send("empty id").exitCode, 0);
  EXPECT_EQ(Send("id empty").exitCode, 2);
}

TEST_F(SendProcess, AfterATimeoutTheNextCommandIsSent) {
  UseSettings({{"COM_BPS=", "115200"}, {"COM_BUF=", "6K"}, {"R_TIMEOUT=", "ON"}});
  const Outcome sent = Send("mute id");
  EXPECT_EQ(sent.exitCode, 0);
  EXPECT_EQ(sent.out, "[mute]\nError: Response Timeout Error\n\n[id]\nSIM-1\n");
}

TEST_F(SendProcess, RawIsTheResponseByteForByte) {
  EXPECT_EQ(Send("--raw id").out, "SIM-1\r\n");
  EXPECT_EQ(Send("--raw bytes").out,
            "\x02"
            "A\x05\r\n\x7f\xff\r\n");
  EXPECT_EQ(Send("--raw nul").out, QByteArray("A\0B\n", 4));
}

TEST_F(SendProcess, RawOfATruncatedResponseIsWhatWasKept) {
  const Outcome sent = Send("--raw big");
  EXPECT_EQ(sent.out, QByteArray(1024, 'x'));
  EXPECT_EQ(sent.exitCode, 3);
}

TEST_F(SendProcess, RawOfNoResponseIsNothing) {
  UseSettings({{"COM_BPS=", "115200"}, {"COM_BUF=", "6K"}, {"R_TIMEOUT=", "ON"}});
  const Outcome sent = Send("--raw id mute");
  EXPECT_EQ(sent.out, "SIM-1\r\n") << "the response before is not this command's";
  EXPECT_EQ(sent.exitCode, 1);
}

TEST_F(SendProcess, ALineThatFailsIsFiveWithTheCommandThatWaited) {
  const Outcome sent = Send("id drop id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(
      sent.err,
      "quarn-send: COM7: the line failed while \"drop\" waited for its response; plug the device in again\n");
  EXPECT_EQ(m_instrument.Received(), "id\r\ndrop\r\n") << "nothing is sent on a line that has failed";
}

TEST_F(SendProcess, RawOfALineThatFailsIsWhatCameBefore) {
  const Outcome sent = Send("--raw id drop");
  EXPECT_EQ(sent.out, "SIM-1\r\n") << "the response before is not this command's";
  EXPECT_EQ(sent.exitCode, 5);
}

TEST_F(SendProcess, AResponseThatALineFailureCutsOffIsNoSuccess) {
  // At 300 bits per second the response ends only after 640 ms of silence.
  UseSettings({{"COM_BPS=", "300"}});
  const Outcome sent = Send("--raw half id");
  EXPECT_EQ(sent.out, "SIM") << "what came is printed";
  EXPECT_EQ(sent.err,
            "quarn-send: COM7: the line failed during the response to \"half\"; plug the device in again\n");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(m_instrument.Received(), "half\r\n") << "nothing is sent on a line that has failed";
}

TEST_F(SendProcess, ThePortCanBeNamed) {
  UseSettings({{"COM_PORT=", "NONE"}});
  EXPECT_EQ(Send("id").exitCode, 5);
  EXPECT_EQ(Send("--port COM7 id").out, "[id]\nSIM-1\n");
}

TEST_F(SendProcess, TheSettingsFileCanBeNamed) {
  WriteSettings(Path("other.qrn"), {{"DELIMITER=", "LF"}});
  const Outcome sent = Send({QStringLiteral("--settings"), Path("other.qrn"), QStringLiteral("id")});
  EXPECT_EQ(sent.exitCode, 0);
  EXPECT_EQ(sent.out, "[id]\nSIM-1\n");
  EXPECT_EQ(m_instrument.Received(), "id\n");
}

TEST_F(SendProcess, AMissingSettingsFileIsFiveWithItsName) {
  const QString missing = Path("missing.qrn");
  const Outcome sent = Send({QStringLiteral("--settings"), missing, QStringLiteral("id")});
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.out, "");
  EXPECT_EQ(sent.err, "quarn-send: " + missing.toUtf8() + ": no such settings file\n");
}

TEST_F(SendProcess, WithoutAWorkingSettingsFileItIsFiveToo) {
  ASSERT_TRUE(QFile::remove(Path("Halvo/Quarn/Quarn.ini")));
  const Outcome sent = Send("id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_TRUE(sent.err.endsWith(
      "Quarn.ini: no such settings file; name a port with --port (quarn-send --list shows them)\n"))
      << sent.err.constData();
}

TEST_F(SendProcess, WhatOnlyReadsSettingsMakesNoFolders) {
  const QTemporaryDir place;
  const auto sent = [&](const QString& home, const QString& config) {
    QProcess process;
    QProcessEnvironment surroundings = environment;
    surroundings.insert(QStringLiteral("HOME"), home);
    surroundings.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    process.setProcessEnvironment(surroundings);
    process.setWorkingDirectory(place.path());
    process.start(QStringLiteral(QUARN_SEND), {QStringLiteral("id")});
    EXPECT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitCode(), 5);
    EXPECT_TRUE(QDir(place.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    return process.readAllStandardError();
  };
  const QByteArray missing = place.path().toUtf8() +
                             "/none/Halvo/Quarn/Quarn.ini: no such settings file; name a port with --port "
                             "(quarn-send --list shows them)\n";
  EXPECT_EQ(sent(place.path(), place.filePath(QStringLiteral("none"))), "quarn-send: " + missing);
  const QByteArray nowhere = sent(QStringLiteral("."), QString());
  EXPECT_TRUE(nowhere.startsWith("quarn-send: There is no folder for the settings")) << nowhere.constData();
}

TEST_F(SendProcess, ADamagedSettingsFileIsFiveWithItsName) {
  const QString working = Path("Halvo/Quarn/Quarn.ini");
  ASSERT_TRUE(QFile::resize(working, 60));
  const Outcome sent = Send("id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.err, "quarn-send: " + working.toUtf8() + ": not a complete settings file\n");
  EXPECT_EQ(m_instrument.Received(), "");
}

TEST_F(SendProcess, ANumberThatNoPortHasIsToldWithWhatToDo) {
  const Outcome sent = Send("--port COM104 id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.out, "");
  EXPECT_EQ(sent.err, "quarn-send: COM104: port numbers end at 99. A port has the name of its link in " +
                          Path("Halvo/Quarn/ports").toUtf8() + ", which can be renamed.\n");
}

TEST_F(SendProcess, APortThatIsNotPresentIsFiveWithItsName) {
  const Outcome sent = Send("--port COM98 id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_EQ(sent.out, "");
  EXPECT_EQ(sent.err, "quarn-send: COM98 is not present; quarn-send --list shows the ports that are\n");
}

TEST_F(SendProcess, APortInUseIsFiveWithItsReason) {
  const OpenResult mine = OpenTerminalDevice(m_instrument.NodePath());
  ASSERT_TRUE(mine.line);
  const Outcome sent = Send("id");
  EXPECT_EQ(sent.exitCode, 5);
  QFile name(QStringLiteral("/proc/self/comm"));
  ASSERT_TRUE(name.open(QIODevice::ReadOnly));
  const QByteArray user = name.readAll().trimmed() + " (PID " + QByteArray::number(::getpid()) + ')';
  EXPECT_EQ(sent.err, "quarn-send: COM7: " + m_instrument.NodePath().toUtf8() + ": in use by " + user +
                          "; end the program that uses it, or wait for it with --wait SECONDS\n");
  EXPECT_EQ(m_instrument.Received(), "");
}

TEST_F(SendProcess, ALineThatNoUartHasIsFiveWithTheReason) {
  UseSettings({{"COM_BITS=", "8"}, {"COM_STOP=", "1.5"}});
  const Outcome sent = Send("id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_TRUE(sent.err.contains("data and stop bits")) << sent.err.constData();
}

TEST_F(SendProcess, CtrlCIsFourAndPutsTheLineBack) {
  const QByteArray node = QFile::encodeName(m_instrument.NodePath());
  const FileDescriptor line(::open(node.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  const auto state = [&line] {
    termios now{};
    EXPECT_EQ(::tcgetattr(line.Get(), &now), 0);
    return now;
  };
  // The state of a line that no program has opened.
  termios untouched = state();
  untouched.c_lflag |= ECHO | ICANON;
  ASSERT_EQ(::tcsetattr(line.Get(), TCSANOW, &untouched), 0);
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND), {QStringLiteral("mute"), QStringLiteral("id")});
  const QDeadlineTimer patience(kPatienceMs);
  while (m_instrument.Received() != "mute\r\n" && !patience.hasExpired()) QThread::msleep(1);
  EXPECT_EQ(state().c_lflag & (ECHO | ICANON), 0U);
  ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 4);
  EXPECT_EQ(process.readAllStandardOutput(), "[mute]\nWarning: Aborted by ESC Key\n\n");
  EXPECT_EQ(m_instrument.Received(), "mute\r\n") << "the next command is not sent";
  EXPECT_EQ(state().c_lflag, untouched.c_lflag);
}

TEST_F(SendProcess, WrongUsageIs64) {
  for (const char* line : {"", "--loud id", "id --port", "-h", "-p COM7 id", "- -", "--port COM7 -5"}) {
    const Outcome sent = Send(line);
    EXPECT_EQ(sent.exitCode, 64) << line;
    EXPECT_EQ(sent.out, "") << line;
    EXPECT_TRUE(sent.err.startsWith("quarn-send: ")) << line;
    EXPECT_TRUE(sent.err.contains("usage: quarn-send")) << line;
  }
  EXPECT_EQ(m_instrument.Received(), "");
}

TEST_F(SendProcess, HelpAndVersionGoToStandardOutput) {
  const Outcome help = Send("--help");
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_TRUE(help.out.startsWith("usage: quarn-send"));
  EXPECT_EQ(help.err, "");
  const Outcome version = Send("--version");
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_EQ(version.out, "quarn-send 1.00\n");
}

}  // namespace
}  // namespace quarn
