#include "send/failure_text.h"

#include "terminal/render.h"

namespace quarn::send {
namespace {

/// The last word of "no permission: group dialout"; empty if no group helps.
QString GroupIn(const QString& reason) {
  const QString words = QStringLiteral(": group ");
  const qsizetype at = reason.lastIndexOf(words);
  return at < 0 ? QString() : reason.mid(at + words.size());
}

QString RemedyOf(const LineFailure& failure) {
  const QString group = GroupIn(failure.reason);
  switch (failure.kind) {
    case LineError::NotFound:
      return QStringLiteral("quarn-send --list shows the ports that are");
    case LineError::NoPermission:
      return group.isEmpty() ? QStringLiteral("ask who owns the device")
                             : QStringLiteral("sudo usermod -aG %1 \"$USER\", and log in again").arg(group);
    case LineError::InUse:
      return QStringLiteral("end the program that uses it, or wait for it with --wait SECONDS");
    case LineError::Refused:
      return QStringLiteral("choose other values for the line");
    case LineError::Disconnected:
      return QStringLiteral("plug the device in again");
    case LineError::None:
    case LineError::Cancelled:
    case LineError::Other:
      break;
  }
  return {};
}

}  // namespace

QString FailureText(const QString& port, const LineFailure& failure) {
  QString text = failure.reason;
  while (text.endsWith(u'.')) text.chop(1);
  if (!text.startsWith(port + u':') && !text.startsWith(port + u' '))
    text.prepend(port + QStringLiteral(": "));
  const QString remedy = RemedyOf(failure);
  return remedy.isEmpty() ? text : text + QStringLiteral("; ") + remedy;
}

QString LatencyWarning(const QString& port, std::chrono::milliseconds latency,
                       std::chrono::milliseconds silence) {
  if (latency < silence) return {};
  return QStringLiteral(
             "%1: the adapter delivers every %2 ms, and a response ends after %3 ms of silence, so it may be "
             "cut off; set the adapter's Latency Timer to 1 ms in the Device Manager, or use --speed LOW")
      .arg(port)
      .arg(latency.count())
      .arg(silence.count());
}

QString Quoted(const QByteArray& command) {
  constexpr qsizetype kMost = 40;
  const QByteArray text = SpellOut(command.left(kMost));
  return QLatin1Char('"') + QString::fromLatin1(text) +
         (command.size() > kMost ? QStringLiteral("...\"") : QStringLiteral("\""));
}

}  // namespace quarn::send
