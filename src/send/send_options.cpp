#include "send/send_options.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "send/option_values.h"
#include "send/option_words.h"

namespace quarn::send {
namespace {

constexpr std::array kNames{
    OptionName{"bps", true},       OptionName{"buffer", true},    OptionName{"data-bits", true},
    OptionName{"defaults", false}, OptionName{"delimiter", true}, OptionName{"escapes", false},
    OptionName{"file", true},      OptionName{"help", false},     OptionName{"parity", true},
    OptionName{"port", true},      OptionName{"raw", false},      OptionName{"settings", true},
    OptionName{"speed", true},     OptionName{"stop-bits", true}, OptionName{"timeout", true},
    OptionName{"version", false},
};

/// Turns the words of the options into their values. The first error stays.
class Reader {
 public:
  explicit Reader(const Arguments& arguments) : m_words(kNames, arguments) {}

  Options Read() {
    m_options.error = m_words.Error();
    m_options.help = m_words.Has("help");
    m_options.version = m_words.Has("version");
    if (!m_options.error.isEmpty()) return m_options;
    ReadPort();
    ReadLine();
    ReadCommands();
    ReadOutput();
    return m_options;
  }

 private:
  void ReadPort() {
    m_options.settingsFile = Text("settings");
    m_options.defaults = m_words.Has("defaults");
    m_options.port = Text("port");
    if (m_options.defaults && m_words.Has("settings")) {
      Refuse(QStringLiteral("--settings and --defaults exclude each other"));
    }
  }

  void ReadLine() {
    m_options.line.rate = Number("bps", 1, std::numeric_limits<std::int32_t>::max());
    m_options.line.dataBits = Setting("data-bits", values::kDataBits);
    m_options.line.parity = Setting("parity", values::kParities);
    m_options.line.stopBits = Setting("stop-bits", values::kStopBits);
    m_options.line.delimiter = Setting("delimiter", values::kDelimiters);
    m_options.line.buffer = Setting("buffer", values::kBufferSizes);
    m_options.line.speed = Setting("speed", values::kSpeeds);
    m_options.timeout = Seconds("timeout", LeastTime::Some);
  }

  void ReadCommands() {
    m_options.escapes = m_words.Has("escapes");
    for (const QString& file : m_words.Values("file")) {
      if (file == QLatin1String("-")) {
        AddStandardInput();
      } else {
        m_options.commands.push_back({.kind = CommandSource::Kind::File, .file = file});
      }
    }
    for (const CommandWord& each : m_words.Commands()) AddWord(each);
    if (m_options.commands.empty() && NeedsCommands()) Refuse(QStringLiteral("no command given"));
  }

  void AddWord(const CommandWord& each) {
    if (!each.isLiteral && each.word.text == QStringLiteral("-")) {
      AddStandardInput();
    } else if (each.word.bytes) {
      m_options.commands.push_back({.kind = CommandSource::Kind::Word, .bytes = *each.word.bytes});
    } else {
      Refuse(QStringLiteral("\"%1\" cannot be sent: the system's character set lacks some of it")
                 .arg(Spelled(each.word.text.value_or(QString()).toUtf8())));
    }
  }

  void AddStandardInput() {
    const bool again = std::ranges::any_of(m_options.commands, [](const CommandSource& each) {
      return each.kind == CommandSource::Kind::StandardInput;
    });
    if (again) return Refuse(QStringLiteral("standard input can be read only once"));
    m_options.commands.push_back({.kind = CommandSource::Kind::StandardInput});
  }

  void ReadOutput() { m_options.raw = m_words.Has("raw"); }

  [[nodiscard]] bool NeedsCommands() const { return !m_options.help && !m_options.version; }

  /// The value given last.
  QString Text(const char* name) {
    const QStringList values = m_words.Values(name);
    return values.isEmpty() ? QString() : values.last();
  }

  std::optional<std::uint32_t> Number(const char* name, std::uint32_t least, std::uint32_t most) {
    if (!m_words.Has(name)) return std::nullopt;
    const auto number = NumberIn(Text(name), least, most);
    if (!number) RefuseValue(name, QStringLiteral("a whole number from %1 to %2").arg(least).arg(most));
    return number;
  }

  enum class LeastTime { None, Some };
  std::optional<std::chrono::milliseconds> Seconds(const char* name, LeastTime least) {
    if (!m_words.Has(name)) return std::nullopt;
    const auto time = SecondsIn(Text(name));
    if (!time || (least == LeastTime::Some && time->count() == 0)) {
      RefuseValue(name, QStringLiteral("a number of seconds, such as 2 or 0.25"));
    }
    return time;
  }

  std::optional<QString> Setting(const char* name, std::span<const SettingValue> values) {
    if (!m_words.Has(name)) return std::nullopt;
    const auto text = SettingTextIn(Text(name), values);
    if (!text) RefuseValue(name, Alternatives(values));
    return text;
  }

  void RefuseValue(const char* name, const QString& wanted) {
    Refuse(QStringLiteral("--%1 %2: it must be %3")
               .arg(QString::fromLatin1(name), Spelled(Text(name).toUtf8()), wanted));
  }

  void Refuse(const QString& reason) {
    if (m_options.error.isEmpty()) m_options.error = reason;
  }

  const OptionWords m_words;
  Options m_options;
};

}  // namespace

Options ParseArguments(const Arguments& arguments) { return Reader(arguments).Read(); }

}  // namespace quarn::send
