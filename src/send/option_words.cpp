#include "send/option_words.h"

#include <QCommandLineOption>
#include <QHash>
#include <algorithm>
#include <utility>

#include "terminal/render.h"

namespace quarn::send {
namespace {

constexpr char16_t kFirstEscaped = 0xDC00;

/// The parser works on text. Bytes that are no text become halves of surrogate pairs, which no text has.
QString TextOf(const Argument& argument) {
  if (argument.text) return *argument.text;
  QString text;
  for (const char each : argument.bytes.value_or(QByteArray())) {
    const auto byte = static_cast<unsigned char>(each);
    text += QChar(byte < 0x80 ? char16_t{byte} : static_cast<char16_t>(kFirstEscaped + byte));
  }
  return text;
}

QByteArray BytesOf(const QString& text) {
  if (text.isValidUtf16()) return text.toUtf8();
  QByteArray bytes;
  for (const QChar each : text) bytes += static_cast<char>(each.unicode() & 0xFFU);
  return bytes;
}

QString WithDashes(const QString& name) { return QStringLiteral("--") + name; }

/// A word that no argument can be: arguments have no NUL.
const QString& Probe() {
  static const QString probe(QChar(u'\0'));
  return probe;
}

}  // namespace

QString Spelled(const QByteArray& bytes) { return QString::fromLatin1(SpellOut(bytes)); }

OptionWords::OptionWords(std::span<const OptionName> names, Arguments arguments)
    : m_arguments(std::move(arguments)) {
  for (const OptionName& each : names) {
    m_parser.addOption(QCommandLineOption(QString::fromLatin1(each.name), QString(),
                                          each.takesValue ? QStringLiteral("value") : QString()));
  }
  QStringList words;
  for (const Argument& each : m_arguments) words.append(TextOf(each));
  const qsizetype count = words.size();
  qsizetype end = 0;
  while (end < count && (words[end] != QLatin1String("--") || IsValueExpectedAfter(words.first(end)))) ++end;
  for (qsizetype i = end + 1; i < count; ++i) {
    m_commands.push_back({m_arguments[static_cast<std::size_t>(i)], true});
  }
  words.resize(end);
  if (!Parse(words)) {
    m_error = WhyWrong(words);
    return;
  }
  FindCommands(words);
  CheckValues(names);
}

/// Whether the next word would be the value of an option, whatever it says.
bool OptionWords::IsValueExpectedAfter(const QStringList& words) {
  Parse(words + QStringList(Probe()));
  return !m_parser.positionalArguments().contains(Probe());
}

/// Puts the words that are no options in front of those after "--".
void OptionWords::FindCommands(const QStringList& words) {
  QHash<QString, Argument> arguments;
  for (qsizetype i = 0; i < words.size(); ++i) {
    arguments.insert(words[i], m_arguments[static_cast<std::size_t>(i)]);
  }
  std::vector<CommandWord> commands;
  for (const QString& each : m_parser.positionalArguments()) commands.push_back({arguments.value(each)});
  m_commands.insert(m_commands.begin(), commands.begin(), commands.end());
}

/// Of words that the parser has refused.
QString OptionWords::WhyWrong(const QStringList& words) {
  const QStringList unknown = m_parser.unknownOptionNames();
  if (!unknown.isEmpty()) {
    const QString name = unknown.first();
    const auto word = std::ranges::find_if(words, [&](const QString& each) {
      return each == WithDashes(name) || each.startsWith(WithDashes(name) + u'=') ||
             (each.size() > 1 && each[0] == u'-' && each[1] != u'-' && each.contains(name));
    });
    return QStringLiteral("unknown option: %1 (a command that begins with - stands after --)")
        .arg(Spelled(BytesOf(word == words.end() ? WithDashes(name) : *word)));
  }
  const QString reason = m_parser.errorText();
  if (IsValueExpectedAfter(words)) return words.last() + QStringLiteral(" takes a value");
  return Spelled(reason.toUtf8());
}

void OptionWords::CheckValues(std::span<const OptionName> names) {
  for (const OptionName& each : names) {
    for (const QString& value : Values(each.name)) {
      const QString option = WithDashes(QString::fromLatin1(each.name));
      if (value.isEmpty()) {
        m_error = option + QStringLiteral(" takes a value");
      } else if (!value.isValidUtf16()) {
        m_error = QStringLiteral("%1: \"%2\" is no UTF-8 text").arg(option, Spelled(BytesOf(value)));
      }
      if (!m_error.isEmpty()) return;
    }
  }
}

}  // namespace quarn::send
