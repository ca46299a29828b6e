// What comes unasked, a port in use, and modem lines.

#include <unistd.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <csignal>

#include "send/send_process.h"

namespace quarn {
namespace {

class SendListen : public SendProcess {
 protected:
  /// The text without its time stamps.
  static QString WithoutTimes(const QByteArray& out) {
    static const QRegularExpression time(QStringLiteral("(^|\n)20[-0-9]{8}T[:.0-9]{12}Z "));
    return QString::fromLatin1(out).replace(time, QStringLiteral("\\1@ "));
  }
};

/// Bytes that come in two pieces, long after the answer.
constexpr char kStreamRules[] =
    "\"go\" -> line \"started\" 1500 \"one\\r\\n\" 1500 \"two\\x1b\\r\\nthree\\r\\n\"\n";

TEST_F(SendListen, PrintsWhatComesBetweenSilences) {
  const test::ServedInstrument instrument{std::string_view(kStreamRules)};
  UseSettings({{"COM_BPS=", "115200"}});
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND),
        {QStringLiteral("--port"), instrument.NodePath(), QStringLiteral("--listen"), QStringLiteral("go")});
  QByteArray out;
  while (out.count('\n') < 5 && process.waitForReadyRead(kPatienceMs)) out += process.readAllStandardOutput();
  ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
  EXPECT_EQ(WithoutTimes(out), QStringLiteral("[go]\nstarted\n@ one\n@ two<ESC>\n@ three\n"));
}

TEST_F(SendListen, EndsWhenItsTimeIsOver) {
  const Outcome sent = Send("--listen 0.2");
  EXPECT_EQ(sent.exitCode, 0);
  EXPECT_EQ(sent.out, "");
  EXPECT_EQ(m_instrument.Received(), "") << "listening sends nothing";
}

TEST_F(SendListen, ALostLineIsFive) {
  const test::ServedInstrument instrument{
      std::string_view("\"go\" -> line \"ok\" 1500 \"bye\" 500 hangup\n")};
  UseSettings({{"COM_BPS=", "115200"}});
  const Outcome sent = Send({QStringLiteral("--port"), instrument.NodePath(), QStringLiteral("--json"),
                             QStringLiteral("--listen"), QStringLiteral("go")});
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_TRUE(sent.out.contains("\"bytes\":\"627965\"")) << sent.out.constData();
  EXPECT_TRUE(sent.err.startsWith("quarn-send: " + instrument.NodePath().toUtf8())) << sent.err.constData();
}

TEST_F(SendListen, ABusyPortIsWaitedFor) {
  OpenResult mine = OpenTerminalDevice(m_instrument.NodePath());
  ASSERT_TRUE(mine.line);
  const Outcome early = Send("--wait 0.2 id");
  EXPECT_EQ(early.exitCode, 5);
  EXPECT_TRUE(early.err.contains("in use by")) << early.err.constData();
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND),
        {QStringLiteral("--wait"), QStringLiteral("80"), QStringLiteral("id")});
  EXPECT_FALSE(process.waitForFinished(300));
  mine.line->Close();
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.readAllStandardOutput(), "[id]\nSIM-1\n");
  EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(SendListen, AnIgnoredSignalDoesNotEndIt) {
  const auto ignore = [] {
    for (const int each : {SIGINT, SIGHUP}) (void)std::signal(each, SIG_IGN);
  };
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND), {QStringLiteral("late"), QStringLiteral("id")}, ignore);
  ASSERT_TRUE(Eventually([this] { return m_instrument.Received() == "late\r\n"; }));
  for (const int each : {SIGINT, SIGHUP}) ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), each), 0);
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
  EXPECT_EQ(m_instrument.Received(), "late\r\nid\r\n");
}

TEST_F(SendListen, CtrlCEndsTheWaitForAPort) {
  const OpenResult mine = OpenTerminalDevice(m_instrument.NodePath());
  ASSERT_TRUE(mine.line);
  // While it waits its handler is set; before, the signal would end it at once.
  QProcess process;
  Start(process, QStringLiteral(QUARN_SEND),
        {QStringLiteral("--wait"), QStringLiteral("80"), QStringLiteral("id")});
  const QString status = QStringLiteral("/proc/%1/status").arg(process.processId());
  ASSERT_TRUE(Eventually([&] {
    QFile file(status);
    if (!file.open(QIODevice::ReadOnly)) return false;
    static const QRegularExpression caught(QStringLiteral("SigCgt:\\s*[0-9a-f]*[2367abef]\\s"));
    return caught.match(QString::fromLatin1(file.readAll())).hasMatch();
  }));
  ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitCode(), 4);
  EXPECT_EQ(m_instrument.Received(), "");
}

/// The row of COM7.
QJsonObject PortRow(const QByteArray& out) {
  for (const QByteArray& each : out.split('\n')) {
    QJsonObject row = QJsonDocument::fromJson(each).object();
    if (row.value(QStringLiteral("port")).toString() == QStringLiteral("COM7")) return row;
  }
  return {};
}

TEST_F(SendListen, ListsThePortsAndTheirHolders) {
  const QJsonObject free = PortRow(Send("--list --json").out);
  EXPECT_EQ(free[QStringLiteral("device")].toString(), m_instrument.NodePath());
  EXPECT_EQ(free[QStringLiteral("description")].toString(), QStringLiteral("Pseudo-terminal"));
  EXPECT_EQ(free[QStringLiteral("unavailable_reason")].toString(), QString());
  EXPECT_EQ(free[QStringLiteral("holder")].toString(), QString());
  const OpenResult mine = OpenTerminalDevice(m_instrument.NodePath());
  ASSERT_TRUE(mine.line);
  const QJsonObject used = PortRow(Send("--list --json").out);
  EXPECT_EQ(used[QStringLiteral("unavailable_reason")].toString(), QStringLiteral("in use"));
  EXPECT_TRUE(used[QStringLiteral("holder")].toString().endsWith(QStringLiteral("(PID %1)").arg(::getpid())));
  const Outcome table = Send("--list");
  EXPECT_EQ(table.exitCode, 0);
  EXPECT_TRUE(table.out.contains("COM7  " + m_instrument.NodePath().toUtf8() + "  Pseudo-terminal"))
      << table.out.constData();
  EXPECT_EQ(Send("--list id").exitCode, 64);
  EXPECT_EQ(Shell("exec \"$0\" --list >/dev/full").exitCode, 74);
  EXPECT_EQ(m_instrument.Received(), "");
}

TEST_F(SendListen, ALineWithoutModemLinesSaysSo) {
  const Outcome sent = Send("--dtr off id");
  EXPECT_EQ(sent.exitCode, 5);
  EXPECT_TRUE(sent.err.contains("DTR cannot be set")) << sent.err.constData();
  EXPECT_EQ(Send("--dtr keep --rts keep id").exitCode, 0);
  EXPECT_EQ(Send("--rts maybe id").exitCode, 64);
  EXPECT_EQ(m_instrument.Received(), "id\r\n");
}

}  // namespace
}  // namespace quarn
