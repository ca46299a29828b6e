#include "app/command_line_file.h"

#include "identity.h"
#include "settings/bounds.h"

namespace quarn {

QString FileOfCommandLine(QStringView commandLine) {
  const qsizetype opening = commandLine.indexOf(u'"');
  const qsizetype closing = opening < 0 ? -1 : commandLine.indexOf(u'"', opening + 1);
  if (closing < 0) return {};
  QStringView argument = commandLine.mid(qMin(closing + 2, commandLine.size()));
  if (argument.startsWith(u'"')) argument = argument.mid(1).chopped(argument.size() > 1 ? 1 : 0);
  return argument.toString();
}

QString WithinPathLimit(QString name) {
  constexpr qsizetype kLongestName = 258;  // 260 with its end would be one too many
  RequireWithinBounds("file name on the command line", kLongestName, name.size());
  return name;
}

QString AnswerOnTerminal(const QStringList& arguments) {
  const QString name = QString::fromLatin1(identity::kName);
  if (arguments.contains(QStringLiteral("--help"))) {
    return QStringLiteral(
               "%1: a terminal for serial ports.\n"
               "\n"
               "usage: quarn [FILE]\n"
               "       quarn --help | --version\n"
               "\n"
               "  FILE       configuration file (.qrn) to start with; without it the settings that\n"
               "             were in force last time\n"
               "  --help     this text\n"
               "  --version  name, version and build date\n")
        .arg(name);
  }
  if (arguments.contains(QStringLiteral("--version"))) {
    return QStringLiteral("%1, build %2\n")
        .arg(QString::fromLatin1(identity::kNameAndVersion), QString::fromLatin1(identity::kBuildDate));
  }
  return {};
}

}  // namespace quarn
