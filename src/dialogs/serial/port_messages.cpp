#include "dialogs/serial/port_messages.h"

namespace quarn {
namespace {

void TellError(MessageOperations& messages, const QString& text) {
  messages.ShowErrorMessage(QStringLiteral(": Error"), QString(), text,
                            QStringLiteral("Check \"Detailed COM Port List\"."));
}

}  // namespace

void TellConnectedTo(MessageOperations& messages, const QString& port) {
  messages.ShowInformationMessage(QStringLiteral(": Information"), QString(),
                                  QStringLiteral("Successfully connected to  \"%1\"").arg(port), QString());
}

void TellFailedToConnect(MessageOperations& messages, const QString& port, FailureSentence sentence) {
  QString text = QStringLiteral("Failed to connect to \"%1\"").arg(port);
  if (sentence == FailureSentence::WithFullStop) text += QLatin1Char('.');
  TellError(messages, text);
}

void TellPortNotAvailable(MessageOperations& messages, const QString& port) {
  TellError(messages, QStringLiteral("  \"%1\" is not available.").arg(port));
}

}  // namespace quarn
