#include "send/report.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "serial/line_test_support.h"
#include "settings/settings_table.h"

namespace quarn::send {
namespace {

SettingsRecord ReportSettings() {
  SettingsRecord settings = DefaultSettings();
  settings.comPort = QStringLiteral("COM7");
  return settings;
}

Report Example(const QByteArray& response, const QByteArray& raw) {
  Report report{.time = QDateTime(QDate(2026, 1, 15), QTime(8, 30, 0, 250), Qt::UTC), .command = "a\"\x1b"};
  report.outcome.response = response;
  report.outcome.raw = raw;
  report.duration = std::chrono::microseconds(123'456);
  return report;
}

QByteArray TextIn(Output output, const Report& report, bool timestamps = false) {
  Options options;
  options.output = output;
  options.timestamps = timestamps;
  const SettingsRecord settings = ReportSettings();
  return ReportWriter(options, settings).TextOf(report);
}

TEST(Report, JsonIsOneLineOfAscii) {
  const QByteArray line = TextIn(Output::Json, Example("one\r\x9btwo\x7f\r", "one\r\n\x9btwo\x7f\r\n"));
  EXPECT_EQ(line.count('\n'), 1);
  for (const char each : line) EXPECT_TRUE(each == '\n' || (each >= ' ' && each <= '~'));
  const QJsonObject object = QJsonDocument::fromJson(line).object();
  const QJsonObject wanted{
      {QStringLiteral("time"), QStringLiteral("2026-01-15T08:30:00.250Z")},
      {QStringLiteral("port"), QStringLiteral("COM7")},
      {QStringLiteral("command"), QStringLiteral("a\"<ESC>")},
      {QStringLiteral("result"), QStringLiteral("received")},
      {QStringLiteral("status"), 0},
      {QStringLiteral("response"), QStringLiteral("one\n<0x9b>two<DEL>")},
      {QStringLiteral("bytes"), QStringLiteral("6f6e650d0a9b74776f7f0d0a")},
      {QStringLiteral("duration_ms"), 123.5},
      {QStringLiteral("attempts"), 1},
  };
  EXPECT_EQ(object, wanted) << line.constData();
}

TEST(Report, CsvIsOneLineWithQuotesWhereTheyAreNeeded) {
  EXPECT_EQ(TextIn(Output::Csv, Example("1,5 V\rx", "1,5 V\r\nx")),
            "2026-01-15T08:30:00.250Z,COM7,\"a\"\"<ESC>\",received,\"1,5 V<CR>x\",312c3520560d0a78,123.5\n");
  Options options;
  options.output = Output::Csv;
  const SettingsRecord settings = ReportSettings();
  EXPECT_EQ(ReportWriter(options, settings).Heading(),
            "time,port,command,result,response,bytes,duration_ms\n");
  options.output = Output::Json;
  EXPECT_EQ(ReportWriter(options, settings).Heading(), "");
}

TEST(Report, CsvQuotesProtectBlanksAtTheEnds) {
  EXPECT_EQ(CsvLine({" a", "b ", "", "c d"}), "\" a\",\"b \",,c d\n");
}

TEST(Report, TheLogMayHaveTimeStamps) {
  const Report report = Example("SIM-1\r", "SIM-1\r");
  EXPECT_EQ(TextIn(Output::Log, report), "[a\"<ESC>]\nSIM-1\n");
  EXPECT_EQ(TextIn(Output::Log, report, true), "2026-01-15T08:30:00.250Z [a\"<ESC>]\nSIM-1\n");
  EXPECT_EQ(TextIn(Output::Raw, report), "SIM-1\r");
}

TEST(Report, AFailedReadOrAnEmptyResponseHasNoText) {
  Report failed = Example("old", "");
  failed.outcome.lineFailed = true;
  failed.verdict = Verdict::LineFailed;
  EXPECT_EQ(ResponseText(failed), "");
  Report empty = Example("\n", "\n");
  empty.verdict = Verdict::Empty;
  EXPECT_EQ(ResponseText(empty), "");
}

TEST(Report, TheTimeIsUtcWhateverTheZone) {
  const QDateTime there(QDate(2026, 1, 15), QTime(10, 0), Qt::OffsetFromUTC, 2 * 3600);
  EXPECT_EQ(TimeText(there), QStringLiteral("2026-01-15T08:00:00.000Z"));
}

TEST(Report, WhatComesUnaskedHasATimeOnEachLine) {
  Options options;
  const SettingsRecord settings = ReportSettings();
  EXPECT_EQ(ReportWriter(options, settings).ListenedTextOf(Example("a\rb\r", "a\rb\r")),
            "2026-01-15T08:30:00.250Z a\n2026-01-15T08:30:00.250Z b\n");
}

}  // namespace
}  // namespace quarn::send
