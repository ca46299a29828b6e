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
    OptionName{"bps", OptionValue::Needed},
    OptionName{"buffer", OptionValue::Needed},
    OptionName{"count", OptionValue::Needed},
    OptionName{"csv"},
    OptionName{"data-bits", OptionValue::Needed},
    OptionName{"defaults"},
    OptionName{"delimiter", OptionValue::Needed},
    OptionName{"dtr", OptionValue::Needed},
    OptionName{"escapes"},
    OptionName{"every", OptionValue::Needed},
    OptionName{"expect", OptionValue::Needed},
    OptionName{"file", OptionValue::Needed},
    OptionName{"help"},
    OptionName{"json"},
    OptionName{"list"},
    OptionName{"listen", OptionValue::MaybeNumber},
    OptionName{"parity", OptionValue::Needed},
    OptionName{"port", OptionValue::Needed},
    OptionName{"raw"},
    OptionName{"retry", OptionValue::Needed},
    OptionName{"rts", OptionValue::Needed},
    OptionName{"settings", OptionValue::Needed},
    OptionName{"speed", OptionValue::Needed},
    OptionName{"stop-bits", OptionValue::Needed},
    OptionName{"stop-on-error"},
    OptionName{"timeout", OptionValue::Needed},
    OptionName{"timestamps"},
    OptionName{"version"},
    OptionName{"wait", OptionValue::Needed},
};

constexpr std::uint32_t kMostTimes = std::numeric_limits<std::int32_t>::max();

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
    ReadOutput();
    ReadJudgement();
    ReadRounds();
    ReadCommands();
    return m_options;
  }

 private:
  void ReadPort() {
    m_options.settingsFile = Text("settings");
    m_options.defaults = m_words.Has("defaults");
    m_options.list = m_words.Has("list");
    m_options.port = Text("port");
    if (m_options.defaults && m_words.Has("settings")) {
      Refuse(QStringLiteral("--settings and --defaults exclude each other"));
    }
    m_options.wait = Seconds("wait", LeastTime::None).value_or(m_options.wait);
    m_options.dtr = Level("dtr");
    m_options.rts = Level("rts");
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
    if (m_options.list && (m_options.listen || !m_options.commands.empty())) {
      Refuse(QStringLiteral("--list sends no command"));
    }
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

  void ReadOutput() {
    int forms = 0;
    for (const auto& [name, output] :
         {std::pair{"raw", Output::Raw}, {"json", Output::Json}, {"csv", Output::Csv}}) {
      if (!m_words.Has(name)) continue;
      m_options.output = output;
      ++forms;
    }
    m_options.timestamps = m_words.Has("timestamps");
    if (forms > 1) Refuse(QStringLiteral("--raw, --json and --csv exclude each other"));
    if (m_options.timestamps && m_options.output == Output::Raw) {
      Refuse(QStringLiteral("--raw and --timestamps exclude each other"));
    }
  }

  void ReadJudgement() {
    m_options.stopOnError = m_words.Has("stop-on-error");
    m_options.retries = Number("retry", 0, kMostTimes).value_or(0);
    if (!m_words.Has("expect")) return;
    m_options.expected.emplace(Text("expect"), QRegularExpression::MultilineOption);
    if (!m_options.expected->isValid()) {
      Refuse(QStringLiteral("--expect %1: %2 (at character %3)")
                 .arg(Spelled(Text("expect").toUtf8()), m_options.expected->errorString())
                 .arg(m_options.expected->patternErrorOffset()));
    }
  }

  void ReadRounds() {
    m_options.every = Seconds("every", LeastTime::Some);
    m_options.count = Number("count", 1, kMostTimes);
    m_options.listen = m_words.Has("listen");
    if (m_options.listen && !Text("listen").isEmpty())
      m_options.listenFor = Seconds("listen", LeastTime::Some);
    if (m_options.listen && m_options.every && !m_options.count) {
      Refuse(QStringLiteral("--listen comes after the last round: --every needs --count with it"));
    }
  }

  [[nodiscard]] bool NeedsCommands() const {
    return !m_options.help && !m_options.version && !m_options.listen && !m_options.list;
  }

  std::optional<bool> Level(const char* name) {
    if (!m_words.Has(name)) return std::nullopt;
    const QString text = Text(name).toLower();
    if (text == QLatin1String("on")) return true;
    if (text == QLatin1String("off")) return false;
    if (text != QLatin1String("keep")) RefuseValue(name, QStringLiteral("on, off or keep"));
    return std::nullopt;
  }

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
    std::optional<QString> text = SettingTextIn(Text(name), values);
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

std::span<const OptionName> KnownOptions() { return kNames; }

Options ParseArguments(const Arguments& arguments) { return Reader(arguments).Read(); }

}  // namespace quarn::send
