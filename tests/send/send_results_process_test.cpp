// Results for machines, judgement and rounds.

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <csignal>

#include "send/send_process.h"

namespace quarn {
namespace {

class SendResults : public SendProcess {
 protected:
  void SetUp() override {
    SendProcess::SetUp();
    UseSettings({{"COM_BPS=", "115200"}, {"COM_BUF=", "6K"}, {"R_TIMEOUT=", "ON"}});
  }
  static QJsonObject Json(const QByteArray& line) { return QJsonDocument::fromJson(line).object(); }
  static int Status(const QByteArray& line) { return Json(line)[QStringLiteral("status")].toInt(-1); }
};

TEST_F(SendResults, JsonIsALineForEachCommand) {
  const QDateTime before = QDateTime::currentDateTimeUtc();
  const Outcome sent = Send("--json id mute bytes");
  const QByteArrayList lines = sent.out.trimmed().split('\n');
  ASSERT_EQ(lines.size(), 3) << sent.out.constData();
  const QJsonObject first = Json(lines[0]);
  EXPECT_EQ(first[QStringLiteral("port")].toString(), QStringLiteral("COM7"));
  EXPECT_EQ(first[QStringLiteral("command")].toString(), QStringLiteral("id"));
  EXPECT_EQ(first[QStringLiteral("response")].toString(), QStringLiteral("SIM-1"));
  EXPECT_EQ(first[QStringLiteral("bytes")].toString(), QStringLiteral("53494d2d310d0a"));
  const QDateTime time = QDateTime::fromString(first[QStringLiteral("time")].toString(), Qt::ISODateWithMs);
  EXPECT_GE(time.toMSecsSinceEpoch(), before.toMSecsSinceEpoch());
  EXPECT_LE(time.toMSecsSinceEpoch(), QDateTime::currentMSecsSinceEpoch());
  EXPECT_GE(first[QStringLiteral("duration_ms")].toDouble(), 12.0) << "the silence that ends a response";
  EXPECT_EQ(Json(lines[1])[QStringLiteral("result")].toString(), QStringLiteral("timeout"));
  EXPECT_EQ(Json(lines[2])[QStringLiteral("bytes")].toString(), QStringLiteral("0241050d0a7fff0d0a"));
  EXPECT_EQ(sent.exitCode, 0);
}

TEST_F(SendResults, CsvHasAHeading) {
  const QByteArrayList lines = Send("--csv id mute").out.split('\n');
  ASSERT_EQ(lines.size(), 4);
  EXPECT_EQ(lines[0], "time,port,command,result,response,bytes,duration_ms");
  EXPECT_TRUE(lines[1].contains("Z,COM7,id,received,SIM-1,53494d2d310d0a,")) << lines[1].constData();
  EXPECT_TRUE(lines[2].contains("Z,COM7,mute,timeout,,,")) << lines[2].constData();
}

TEST_F(SendResults, TimeStampsStandBeforeTheCommand) {
  const QByteArray out = Send("--timestamps id").out;
  EXPECT_TRUE(
      QRegularExpression(
          QStringLiteral("\\A20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\dZ \\[id\\]\nSIM-1\n\\z"))
          .match(QString::fromLatin1(out))
          .hasMatch())
      << out.constData();
}

/// Each line is out when its transaction ends, also into a pipe.
TEST_F(SendResults, ALineIsOutWhenItsTransactionEnds) {
  QProcess process;
  UseSettings({{"R_TIMEOUT=", "OFF"}});
  Start(process, QStringLiteral(QUARN_SEND),
        {QStringLiteral("--json"), QStringLiteral("id"), QStringLiteral("mute")});
  ASSERT_TRUE(process.waitForReadyRead(kPatienceMs));
  EXPECT_EQ(Status(process.readAllStandardOutput()), 0);
  ASSERT_TRUE(Eventually([&] { return m_instrument.Received() == "id\r\nmute\r\n"; }));
  process.terminate();
  ASSERT_TRUE(process.waitForFinished(kPatienceMs));
  EXPECT_EQ(process.exitCode(), 4);
  EXPECT_EQ(Status(process.readAllStandardOutput()), 4);
}

TEST_F(SendResults, WhatIsExpectedDecides) {
  EXPECT_EQ(Send("--expect ^SIM-[0-9]$ id").exitCode, 0);
  const Outcome other = Send("--json --expect SIM-2 id");
  EXPECT_EQ(other.exitCode, 6);
  EXPECT_EQ(Status(other.out), 6);
  EXPECT_EQ(Send("--expect x mute").exitCode, 1);
  const Outcome wrong = Send("--expect ( id");
  EXPECT_EQ(wrong.exitCode, 64);
  EXPECT_TRUE(wrong.err.startsWith("quarn-send: --expect (: ")) << wrong.err.constData();
}

TEST_F(SendResults, TheFirstFailureEndsARunThatStops) {
  EXPECT_EQ(Send("empty id").exitCode, 0);
  const std::string before = m_instrument.Received();
  const Outcome sent = Send("--stop-on-error id empty id");
  EXPECT_EQ(sent.exitCode, 2);
  EXPECT_EQ(m_instrument.Received(), before + "id\r\nempty\r\n");
}

TEST_F(SendResults, ACommandIsTriedAgain) {
  const Outcome sent = Send("--json --retry 2 --stop-on-error empty id");
  EXPECT_EQ(m_instrument.Received(), "empty\r\nempty\r\nempty\r\n");
  EXPECT_EQ(sent.out.count('\n'), 1);
  EXPECT_EQ(Json(sent.out)[QStringLiteral("attempts")].toInt(), 3);
  EXPECT_EQ(sent.exitCode, 2);
  EXPECT_EQ(Send("--retry 2 id").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "empty\r\nempty\r\nempty\r\nid\r\n");
}

TEST_F(SendResults, RoundsBeginAtFixedDistances) {
  const Outcome sent = Send("--json --every 0.3 --count 4 id");
  const QByteArrayList lines = sent.out.trimmed().split('\n');
  ASSERT_EQ(lines.size(), 4);
  std::vector<qint64> times;
  for (const QByteArray& each : lines) {
    const QString time = Json(each)[QStringLiteral("time")].toString();
    times.push_back(QDateTime::fromString(time, Qt::ISODateWithMs).toMSecsSinceEpoch());
  }
  // Each is late by its own delay alone, and never early. On a busy computer a round may be left out.
  for (std::size_t i = 1; i < times.size(); ++i) {
    EXPECT_GE(times[i] - times[0], static_cast<qint64>(i) * 300 - 50);
  }
  EXPECT_EQ(sent.exitCode, 0);
}

TEST_F(SendResults, ACountAloneIsRoundsInOneConnection) {
  EXPECT_EQ(Send("--count 3 id").exitCode, 0);
  EXPECT_EQ(m_instrument.Received(), "id\r\nid\r\nid\r\n");
}

TEST_F(SendResults, RoundsEndCleanlyWithCtrlC) {
  for (const auto& [count, status] : {std::pair{"--retry=0", 0}, {"--count=9", 4}}) {
    QProcess process;
    const std::size_t before = m_instrument.Received().size();
    Start(process, QStringLiteral(QUARN_SEND),
          {QStringLiteral("--every"), QStringLiteral("1000"), QString::fromLatin1(count),
           QStringLiteral("id")});
    ASSERT_TRUE(process.waitForReadyRead(kPatienceMs));
    ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
    ASSERT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), status) << count;
    EXPECT_EQ(process.readAllStandardOutput(), "[id]\nSIM-1\n");
    EXPECT_EQ(m_instrument.Received().substr(before), "id\r\n");
  }
}

TEST_F(SendResults, LostOutputIsNoSuccess) {
  for (const char* arguments : {"--json id", "--csv id", "--every 9 id", "--count 2 id", "--listen 0.1 id"}) {
    const QByteArray line = QByteArray("exec \"$0\" ") + arguments + " >/dev/full";
    const Outcome sent = Shell(line.constData());
    EXPECT_EQ(sent.exitCode, 74) << arguments;
    EXPECT_EQ(sent.err, "quarn-send: standard output: No space left on device\n") << arguments;
  }
}

}  // namespace
}  // namespace quarn
