#include "terminal/terminal_title.h"

#include "serial/port_names.h"
#include "terminal/screen_width.h"

namespace quarn {

QString TerminalTitle(const QString& portName, bool open, const QString& inputMax, bool overwrite,
                      const OperationLog& log) {
  QString title = QStringLiteral("Quarn - Terminal Screeen (") + PortTitlePart(portName, open) +
                  QStringLiteral(")  ") + ScreenWidthOf(inputMax).letter + QStringLiteral("- ") +
                  (overwrite ? QStringLiteral("OVR") : QStringLiteral("INS"));
  if (log.HasContent()) {
    title += QStringLiteral("  [ ") + QString::number(log.TopLine() + 1) + QLatin1Char('-') +
             QString::number(log.WritePos()) + QStringLiteral("  ]");
  }
  return title;
}

}  // namespace quarn
