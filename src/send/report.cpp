#include "send/report.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "terminal/control_bytes.h"
#include "terminal/log_text.h"
#include "terminal/render.h"

namespace quarn::send {
namespace {

QByteArray MillisecondsText(std::chrono::microseconds time) {
  constexpr double kMicrosecondsPerMillisecond = 1000;
  return QByteArray::number(static_cast<double>(time.count()) / kMicrosecondsPerMillisecond, 'f', 1);
}

}  // namespace

QString NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Received:
      return QStringLiteral("received");
    case Verdict::Timeout:
      return QStringLiteral("timeout");
    case Verdict::Empty:
      return QStringLiteral("empty");
    case Verdict::Truncated:
      return QStringLiteral("truncated");
    case Verdict::Aborted:
      return QStringLiteral("aborted");
    case Verdict::LineFailed:
      return QStringLiteral("line failed");
    case Verdict::Unexpected:
      return QStringLiteral("unexpected");
  }
  return {};
}

QByteArray ResponseText(const Report& report) {
  // After a failed read the outcome shows the response before.
  if (report.outcome.lineFailed || report.verdict == Verdict::Empty) return {};
  QByteArray text = RenderBytesForLog(report.outcome.response);
  while (text.endsWith(kCr)) text.chop(1);
  return text.replace(kCr, '\n');
}

QString TimeText(const QDateTime& time) {
  return time.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

QByteArray CsvLine(const QByteArrayList& values) {
  QByteArrayList fields;
  for (QByteArray each : values) {
    const bool needsQuotes =
        each.contains(',') || each.contains('"') || each.startsWith(' ') || each.endsWith(' ');
    fields.append(needsQuotes ? '"' + each.replace("\"", "\"\"") + '"' : each);
  }
  return fields.join(',') + '\n';
}

QByteArray ReportWriter::Heading() const {
  if (m_options.output != Output::Csv) return {};
  return CsvLine({"time", "port", "command", "result", "response", "bytes", "duration_ms"});
}

QByteArray ReportWriter::TextOf(const Report& report) const {
  switch (m_options.output) {
    case Output::Log:
      return LogOf(report);
    case Output::Raw:
      return report.outcome.raw;
    case Output::Json:
      return JsonOf(report);
    case Output::Csv:
      return CsvOf(report);
  }
  return {};
}

QByteArray ReportWriter::LogOf(const Report& report) const {
  const QByteArray text = LogTextOf(report.outcome, SpellOut(report.command), m_settings).replace(kCr, '\n');
  return m_options.timestamps ? TimeText(report.time).toLatin1() + ' ' + text : text;
}

QByteArray ReportWriter::ListenedTextOf(const Report& report) const {
  if (m_options.output != Output::Log) return TextOf(report);
  QByteArray text;
  for (const QByteArray& each : ResponseText(report).split('\n')) {
    text += TimeText(report.time).toLatin1() + ' ' + each + '\n';
  }
  return text;
}

QByteArray ReportWriter::JsonOf(const Report& report) const {
  const QJsonObject line{
      {QStringLiteral("time"), TimeText(report.time)},
      {QStringLiteral("port"), m_settings.comPort},
      {QStringLiteral("command"), QString::fromLatin1(SpellOut(report.command))},
      {QStringLiteral("result"), NameOf(report.verdict)},
      {QStringLiteral("status"), static_cast<int>(report.verdict)},
      {QStringLiteral("response"), QString::fromLatin1(ResponseText(report))},
      {QStringLiteral("bytes"), QString::fromLatin1(report.outcome.raw.toHex())},
      {QStringLiteral("duration_ms"), MillisecondsText(report.duration).toDouble()},
      {QStringLiteral("attempts"), report.attempts},
  };
  return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray ReportWriter::CsvOf(const Report& report) const {
  // One line of text for each command, however many the response has.
  const QByteArray response = ResponseText(report).replace('\n', "<CR>");
  return CsvLine({TimeText(report.time).toLatin1(), SpellOut(m_settings.comPort.toUtf8()),
                  SpellOut(report.command), NameOf(report.verdict).toLatin1(), response,
                  report.outcome.raw.toHex(), MillisecondsText(report.duration)});
}

}  // namespace quarn::send
