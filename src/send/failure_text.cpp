#include "send/failure_text.h"

#include "terminal/render.h"

namespace quarn::send {
namespace {

QString RemedyOf(LineError kind) {
  switch (kind) {
    case LineError::NotFound:
      return QStringLiteral("quarn-send --list shows the ports that are");
    case LineError::NoPermission:
      return QStringLiteral("join that group (sudo usermod -aG GROUP USER) and log in again");
    case LineError::InUse:
      return QStringLiteral("end that program, or wait for it with --wait SECONDS");
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
  const QString remedy = RemedyOf(failure.kind);
  return remedy.isEmpty() ? text : text + QStringLiteral("; ") + remedy;
}

QString Quoted(const QByteArray& command) {
  constexpr qsizetype kMost = 40;
  const QByteArray text = SpellOut(command.left(kMost));
  return QLatin1Char('"') + QString::fromLatin1(text) +
         (command.size() > kMost ? QStringLiteral("...\"") : QStringLiteral("\""));
}

}  // namespace quarn::send
