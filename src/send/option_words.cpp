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

bool IsNumber(const QString& word) {
  return !word.isEmpty() &&
         std::ranges::all_of(word, [](QChar each) { return (each >= u'0' && each <= u'9') || each == u'.'; });
}

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
    m_parser.addOption(
        QCommandLineOption(QString::fromLatin1(each.name), QString(),
                           each.value == OptionValue::None ? QString() : QStringLiteral("value")));
  }
  const QStringList words = TakeOptions(names);
  if (!Parse(words)) {
    m_error = WhyWrong(words);
    return;
  }
  FindCommands();
  CheckValues(names);
}

/// The words up to "--", for the parser; what follows are commands.
QStringList OptionWords::TakeOptions(std::span<const OptionName> names) {
  const auto mayHaveNumber = [&](const QString& word) {
    return std::ranges::any_of(names, [&](const OptionName& each) {
      return each.value == OptionValue::MaybeNumber && word == WithDashes(QString::fromLatin1(each.name));
    });
  };
  QStringList words;
  std::size_t next = 0;
  while (next < m_arguments.size()) {
    QString word = TextOf(m_arguments[next++]);
    if (word == QLatin1String("--") && !IsValueExpectedAfter(words)) break;
    if (mayHaveNumber(word) && !IsValueExpectedAfter(words)) {
      // The parser needs to be told where the value ends.
      word += u'=';
      if (next < m_arguments.size() && IsNumber(TextOf(m_arguments[next])))
        word += TextOf(m_arguments[next++]);
    }
    words.append(word);
  }
  for (; next < m_arguments.size(); ++next) m_commands.push_back({m_arguments[next], true});
  return words;
}

/// Whether the next word would be the value of an option, whatever it says.
bool OptionWords::IsValueExpectedAfter(const QStringList& words) {
  Parse(words + QStringList(Probe()));
  return !m_parser.positionalArguments().contains(Probe());
}

/// Puts the words that are no options in front of those after "--".
void OptionWords::FindCommands() {
  QHash<QString, Argument> arguments;
  for (const Argument& each : m_arguments) arguments.insert(TextOf(each), each);
  std::vector<CommandWord> commands;
  for (const QString& each : m_parser.positionalArguments()) commands.push_back({arguments.value(each)});
  m_commands.insert(m_commands.begin(), commands.begin(), commands.end());
}

/// Of words that the parser has refused.
QString OptionWords::WhyWrong(const QStringList& words) {
  const QStringList unknown = m_parser.unknownOptionNames();
  if (!unknown.isEmpty()) {
    const QString& name = unknown.first();
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
      if (value.isEmpty() && each.value == OptionValue::Needed) {
        m_error = option + QStringLiteral(" takes a value");
      } else if (!value.isValidUtf16()) {
        m_error = QStringLiteral("%1: \"%2\" is no UTF-8 text").arg(option, Spelled(BytesOf(value)));
      }
      if (!m_error.isEmpty()) return;
    }
  }
}

}  // namespace quarn::send
