#include "app/file_argument.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "app/platform.h"
#include "base/bounds.h"
#include "identity.h"
#include "terminal/render.h"

namespace quarn {
namespace {

constexpr int kWrongUsage = 64;
constexpr int kNotPrinted = 74;
constexpr char kDemo[] = "--demo";

struct QtOption {
  const char16_t* name;  ///< behind one dash or two
  bool takesValue;
};
/// Options that Qt's application object takes from the arguments; the session manager passes one of them.
constexpr std::array<QtOption, 18> kQtOptions = {{{u"display", true},
                                                  {u"dograb", false},
                                                  {u"geometry", true},
                                                  {u"icon", true},
                                                  {u"nograb", false},
                                                  {u"platform", true},
                                                  {u"platformpluginpath", true},
                                                  {u"platformtheme", true},
                                                  {u"plugin", true},
                                                  {u"qwindowgeometry", true},
                                                  {u"qwindowicon", true},
                                                  {u"qwindowtitle", true},
                                                  {u"reverse", false},
                                                  {u"session", true},
                                                  {u"style", true},
                                                  {u"stylesheet", true},
                                                  {u"title", true},
                                                  {u"widgetcount", false}}};

/// The number of words of the option that starts here; 0 if it is not one of Qt's.
qsizetype WordsOfQtOption(QStringView word) {
  const QStringView name = word.mid(word.startsWith(u"--") ? 2 : 1);
  const qsizetype equals = name.indexOf(u'=');
  const QStringView bare = equals < 0 ? name : name.first(equals);
  const auto* const found = std::ranges::find_if(
      kQtOptions, [bare](const QtOption& each) { return bare == QStringView(each.name); });
  if (found == kQtOptions.end()) return 0;
  return found->takesValue && equals < 0 ? 2 : 1;
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
  if (arguments.contains(QStringLiteral("--help"))) {
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
  if (arguments.contains(QStringLiteral("--version"))) {
    return QStringLiteral("%1, build %2\n")
        .arg(QString::fromLatin1(identity::kNameAndVersion), QString::fromLatin1(identity::kBuildDate));
  }
  return {};
}

bool IsDemo(const QStringList& arguments) { return arguments.contains(QLatin1String(kDemo)); }

QString WrongOption(const QStringList& arguments) {
  for (qsizetype i = 1; i < arguments.size() && arguments[i].startsWith(u'-');) {
    const qsizetype words = arguments[i] == QLatin1String(kDemo) ? 1 : WordsOfQtOption(arguments[i]);
    if (words == 0) return arguments[i];
    i += words;
  }
  return {};
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
