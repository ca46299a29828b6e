#include "app/file_argument.h"

#include <cstdlib>

#include "app/platform.h"
#include "app/start_options.h"
#include "base/bounds.h"
#include "identity.h"
#include "terminal/render.h"

namespace quarn {
namespace {

constexpr int kWrongUsage = 64;
constexpr int kNotPrinted = 74;

Words WordsOf(const QStringList& arguments) {
  Words words;
  for (const QString& each : arguments) {
    const QStringView view(each);
    words.emplace_back(view.utf16(), static_cast<std::size_t>(view.size()));
  }
  return words;
}

QString Usage() {
  return QStringLiteral(
      "usage: quarn [FILE]\n"
      "       quarn --demo\n"
      "       quarn --help | --version\n");
}

}  // namespace

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
  const Words words = WordsOf(arguments);
  if (HasOption(words, kHelpOption)) {
    return QStringLiteral(
               "%1: a terminal for serial ports.\n"
               "\n"
               "%2"
               "\n"
               "  FILE       configuration file (.qrn) to start with; default: the last settings\n"
               "  --demo     try it out: with a simulated instrument, and settings that are forgotten\n"
               "  --help     print this text\n"
               "  --version  print name, version and build date\n"
               "%3")
        .arg(name, Usage(), FileArgumentNote());
  }
  if (HasOption(words, kVersionOption)) {
    return QStringLiteral("%1, build %2\n")
        .arg(QString::fromLatin1(identity::kNameAndVersion), QString::fromLatin1(identity::kBuildDate));
  }
  return {};
}

bool IsDemo(const QStringList& arguments) { return HasOption(WordsOf(arguments), kDemoOption); }

QString WrongOption(const QStringList& arguments) {
  const std::u16string_view wrong = FirstWrongOption(WordsOf(arguments));
  return QStringView(wrong.data(), static_cast<qsizetype>(wrong.size())).toString();
}

std::optional<int> AnswerAtOnce(const QStringList& arguments) {
  const QString answer = AnswerOnTerminal(arguments);
  if (!answer.isEmpty()) return WriteOnTerminal(answer, TerminalStream::Output) ? EXIT_SUCCESS : kNotPrinted;
  const QString wrong = WrongOption(arguments);
  if (wrong.isEmpty()) return std::nullopt;
  const QString spelled = QString::fromLatin1(SpellOut(wrong.toUtf8()));
  WriteOnTerminal(QStringLiteral("quarn: unknown option: %1\n%2").arg(spelled, Usage()),
                  TerminalStream::Error);
  return kWrongUsage;
}

}  // namespace quarn
