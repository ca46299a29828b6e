#include "send/send_options.h"

#include "terminal/render.h"

namespace quarn::send {

const char kUsage[] =
    "usage: quarn-send [--settings FILE] [--port COMn] [--raw] [--] COMMAND...\n"
    "\n"
    "Sends each COMMAND to the serial port, waits for its response and prints both as in the\n"
    "operation log.\n"
    "\n"
    "  --settings FILE  use the settings in FILE instead of the current ones\n"
    "  --port COMn      use this port instead of the one in the settings\n"
    "  --raw            print only the response, byte for byte\n"
    "  --               all following words are commands, even if they begin with -\n"
    "  --help, --version\n"
    "\n"
    "exit status of the last command:\n"
    "  0 response received    1 response time-out    2 empty response\n"
    "  3 response truncated   4 aborted (Ctrl+C)\n"
    "  5 the port or the settings could not be opened, or the line failed\n"
    "  64 wrong usage, or a command that cannot be sent\n"
    "  74 standard output could not be written\n";

namespace {

/// Reads the words from left to right.
class Parser {
 public:
  explicit Parser(const Arguments& arguments) : m_arguments(arguments) {}

  Options Parse() {
    while (m_next < m_arguments.size() && m_options.error.isEmpty()) TakeWord(m_arguments[m_next++]);
    const bool needsCommand = m_options.error.isEmpty() && !m_options.help && !m_options.version;
    if (needsCommand && m_options.commands.isEmpty()) {
      m_options.error = QStringLiteral("no command given");
    }
    return m_options;
  }

 private:
  void TakeWord(const Argument& word) {
    const bool isOption = !m_onlyCommands && Bytes(word).startsWith('-');
    if (isOption) {
      TakeOption(Bytes(word));
    } else if (word.bytes) {
      m_options.commands.append(*word.bytes);
    } else {
      m_options.error = QStringLiteral("\"%1\" cannot be sent: the system's character set lacks some of it")
                            .arg(Spelled(Bytes(word)));
    }
  }

  void TakeOption(const QByteArray& name) {
    if (name == "--") {
      m_onlyCommands = true;
    } else if (name == "--raw") {
      m_options.raw = true;
    } else if (name == "--help") {
      m_options.help = true;
    } else if (name == "--version") {
      m_options.version = true;
    } else if (name == "--settings") {
      TakeValue(name, m_options.settingsFile);
    } else if (name == "--port") {
      TakeValue(name, m_options.port);
    } else {
      m_options.error = QStringLiteral("unknown option: %1 (a command that begins with - stands after --)")
                            .arg(Spelled(name));
    }
  }

  void TakeValue(const QByteArray& name, QString& value) {
    const QString option = QString::fromLatin1(name);
    if (m_next == m_arguments.size()) {
      m_options.error = option + QStringLiteral(" takes a value");
      return;
    }
    const Argument& word = m_arguments[m_next++];
    value = word.text.value_or(QString());
    if (!word.text) {
      m_options.error = QStringLiteral("%1: \"%2\" is no UTF-8 text")
                            .arg(option, Spelled(word.bytes.value_or(QByteArray())));
    } else if (value.isEmpty()) {
      m_options.error = option + QStringLiteral(" takes a value");
    }
  }

  static QByteArray Bytes(const Argument& word) {
    return word.bytes ? *word.bytes : word.text.value_or(QString()).toUtf8();
  }
  static QString Spelled(const QByteArray& bytes) { return QString::fromLatin1(SpellOut(bytes)); }

  const Arguments& m_arguments;
  std::size_t m_next = 0;
  bool m_onlyCommands = false;
  Options m_options;
};

}  // namespace

Options ParseArguments(const Arguments& arguments) { return Parser(arguments).Parse(); }

}  // namespace quarn::send
