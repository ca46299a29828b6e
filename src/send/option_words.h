#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <span>
#include <vector>

#include "send/platform.h"

namespace quarn::send {

enum class OptionValue {
  None,
  Needed,
  /// The next word is the value if it is a number. Without one the value is empty.
  MaybeNumber,
};

struct OptionName {
  const char* name;  ///< without its dashes
  OptionValue value = OptionValue::None;
};

/// A word that is no option.
struct CommandWord {
  Argument word;
  /// It stands after "--", so it is a command whatever it says.
  bool isLiteral = false;
};

/// The arguments, sorted into options, their values and commands. Options may stand anywhere before "--".
class OptionWords {
 public:
  OptionWords(std::span<const OptionName> names, Arguments arguments);

  /// Why the arguments are wrong; empty if they are not.
  [[nodiscard]] const QString& Error() const { return m_error; }
  [[nodiscard]] bool Has(const char* name) const { return m_parser.isSet(QLatin1String(name)); }
  /// In the order in which they were given; a value that is empty or no text is an error instead.
  [[nodiscard]] QStringList Values(const char* name) const { return m_parser.values(QLatin1String(name)); }
  [[nodiscard]] const std::vector<CommandWord>& Commands() const { return m_commands; }

 private:
  bool Parse(const QStringList& words) { return m_parser.parse(QStringList(QString()) + words); }
  bool IsValueExpectedAfter(const QStringList& words);
  QStringList TakeOptions(std::span<const OptionName> names);
  void FindCommands();
  [[nodiscard]] QString WhyWrong(const QStringList& words);
  void CheckValues(std::span<const OptionName> names);

  const Arguments m_arguments;
  QCommandLineParser m_parser;
  std::vector<CommandWord> m_commands;
  QString m_error;
};

/// Bytes from outside in a message: they cannot control a terminal.
QString Spelled(const QByteArray& bytes);

}  // namespace quarn::send
