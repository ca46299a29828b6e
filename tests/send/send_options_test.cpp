#include "send/send_options.h"

#include <QRegularExpression>

#include "send/option_values.h"
#include "serial/line_test_support.h"

namespace quarn::send {

void PrintTo(const CommandSource& source, std::ostream* out) {
  *out << static_cast<int>(source.kind) << ' ' << source.bytes.toStdString() << source.file.toStdString();
}
bool operator==(const CommandSource& a, const CommandSource& b) {
  return a.kind == b.kind && a.bytes == b.bytes && a.file == b.file;
}

namespace {

using Kind = CommandSource::Kind;

Options Parse(const char* line) {
  Arguments arguments;
  for (const QByteArray& word : QByteArray(line).split(' ')) {
    if (!word.isEmpty()) arguments.push_back({QString::fromLatin1(word), word});
  }
  return ParseArguments(arguments);
}

std::vector<CommandSource> Words(const QByteArrayList& words) {
  std::vector<CommandSource> sources;
  for (const QByteArray& each : words) sources.push_back({.bytes = each});
  return sources;
}

TEST(ParseArguments, CommandsAreWhatIsLeft) {
  const Options options = Parse("id meas? +x");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands, Words({"id", "meas?", "+x"}));
  EXPECT_EQ(options.port, QString());
  EXPECT_EQ(options.settingsFile, QString());
  EXPECT_EQ(options.output, Output::Log);
  EXPECT_FALSE(options.help);
  EXPECT_FALSE(options.version);
}

TEST(ParseArguments, OptionsMayStandAnywhere) {
  const Options options = Parse("--port COM7 id --raw --settings a.qrn status");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.port, QStringLiteral("COM7"));
  EXPECT_EQ(options.settingsFile, QStringLiteral("a.qrn"));
  EXPECT_EQ(options.output, Output::Raw);
  EXPECT_EQ(options.commands, Words({"id", "status"}));
}

TEST(ParseArguments, AfterTwoDashesEverythingIsACommand) {
  const Options options = Parse("--raw -- --port --help -5 - --");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.output, Output::Raw);
  EXPECT_FALSE(options.help);
  EXPECT_EQ(options.commands, Words({"--port", "--help", "-5", "-", "--"}));
}

TEST(ParseArguments, AnEmptyCommandIsACommand) {
  const Options options = ParseArguments({{QString(), QByteArray()}});
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands, Words({QByteArray()}));
}

TEST(ParseArguments, AValueMayLookLikeAnOption) {
  EXPECT_EQ(Parse("--settings --raw id").settingsFile, QStringLiteral("--raw"));
  EXPECT_EQ(Parse("--settings --raw id").output, Output::Log);
}

TEST(ParseArguments, TheLastValueCounts) {
  EXPECT_EQ(Parse("--port COM1 --port COM2 id").port, QStringLiteral("COM2"));
}

TEST(ParseArguments, WrongUsageSaysWhy) {
  EXPECT_EQ(Parse("").error, QStringLiteral("no command given"));
  EXPECT_EQ(Parse("--raw --port COM7").error, QStringLiteral("no command given"));
  EXPECT_EQ(Parse("--").error, QStringLiteral("no command given"));
  EXPECT_EQ(Parse("id --port").error, QStringLiteral("--port takes a value"));
  EXPECT_EQ(Parse("id --settings").error, QStringLiteral("--settings takes a value"));
  const QString hint = QStringLiteral(" (a command that begins with - stands after --)");
  for (const char* word : {"--loud", "--loud=1", "-p", "-h", "-port", "-5", "---"}) {
    EXPECT_EQ(Parse(word).error, QStringLiteral("unknown option: ") + QString::fromLatin1(word) + hint);
    EXPECT_EQ(Parse(word).commands, Words({}));
  }
}

TEST(ParseArguments, AValueIsNeverEmpty) {
  const Argument empty{QString(), QByteArray()};
  for (const char* option : {"--port", "--settings"}) {
    const Options options =
        ParseArguments({{QString::fromLatin1(option), option}, empty, {QStringLiteral("id"), "id"}});
    EXPECT_EQ(options.error, QString::fromLatin1(option) + QStringLiteral(" takes a value"));
  }
}

/// If arguments are bytes, one may not be valid text; if they are text, one may not have bytes.
TEST(ParseArguments, WhatIsLostOnTheWayIsRefused) {
  const Options name = ParseArguments({{QStringLiteral("--settings"), "--settings"}, {{}, "\xff.qrn"}});
  EXPECT_EQ(name.error, QStringLiteral("--settings: \"<0xff>.qrn\" is no UTF-8 text"));
  EXPECT_EQ(ParseArguments({{{}, "\xff"}}).commands, Words({"\xff"}));
  const Options command = ParseArguments({{QStringLiteral("5 \u20ac"), {}}});
  EXPECT_EQ(command.error,
            QStringLiteral("\"5 <0xe2><0x82><0xac>\" cannot be sent: the system's character set "
                           "lacks some of it"));
}

TEST(ParseArguments, AnErrorSteersNoTerminal) {
  const Options options = ParseArguments({{QStringLiteral("-\x1b[2J"), "-\x1b[2J"}});
  EXPECT_TRUE(options.error.startsWith(QStringLiteral("unknown option: -<ESC>[2J ")));
}

TEST(ParseArguments, AValueMayStandBehindAnEqualsSign) {
  EXPECT_EQ(Parse("--port=COM7 id").port, QStringLiteral("COM7"));
  EXPECT_EQ(Parse("--port= id").error, QStringLiteral("--port takes a value"));
  EXPECT_FALSE(Parse("--raw=1 id").error.isEmpty());
}

TEST(ParseArguments, ADashIsStandardInputButNotBehindTwo) {
  const std::vector<CommandSource> both{{.bytes = "id"}, {.kind = Kind::StandardInput}, {.bytes = "-"}};
  EXPECT_EQ(Parse("id - -- -").commands, both);
  EXPECT_EQ(Parse("--file -").commands, std::vector<CommandSource>{{.kind = Kind::StandardInput}});
  EXPECT_EQ(Parse("- -").error, QStringLiteral("standard input can be read only once"));
  EXPECT_EQ(Parse("- --file -").error, QStringLiteral("standard input can be read only once"));
}

TEST(ParseArguments, TwoDashesMayBeAValue) {
  const Options options = Parse("--settings -- id -- --port");
  EXPECT_EQ(options.settingsFile, QStringLiteral("--"));
  EXPECT_EQ(options.commands, Words({"id", "--port"}));
}

TEST(ParseArguments, CommandsOfFilesComeFirst) {
  const std::vector<CommandSource> all{{.kind = Kind::File, .file = QStringLiteral("a")},
                                       {.kind = Kind::File, .file = QStringLiteral("b")},
                                       {.bytes = "id"}};
  EXPECT_EQ(Parse("id --file a --file b").commands, all);
}

TEST(ParseArguments, TheLineIsSpelledAsTheSettingsDo) {
  const LineOptions line = Parse(
                               "--bps 460800 --data-bits 7 --parity EVEN --stop-bits 1.5 --delimiter stx_etx "
                               "--buffer 6k --speed low id")
                               .line;
  EXPECT_EQ(line.rate, 460800U);
  EXPECT_EQ(line.dataBits, QStringLiteral("7"));
  EXPECT_EQ(line.parity, QStringLiteral("Even"));
  EXPECT_EQ(line.stopBits, QStringLiteral("1.5"));
  EXPECT_EQ(line.delimiter, QStringLiteral("STX_ETX"));
  EXPECT_EQ(line.buffer, QStringLiteral("6K"));
  EXPECT_EQ(line.speed, QStringLiteral("LOW"));
  const LineOptions none = Parse("id").line;
  EXPECT_FALSE(none.rate || none.dataBits || none.parity || none.stopBits || none.delimiter || none.buffer ||
               none.speed);
}

TEST(ParseArguments, JudgementAndRounds) {
  const Options options = Parse(
      "--json --expect ^a --stop-on-error --retry 2 --every 0.5 --count 3 --wait 1 --dtr on --rts OFF id");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.output, Output::Json);
  EXPECT_EQ(options.expected->pattern(), QStringLiteral("^a"));
  EXPECT_TRUE(options.stopOnError);
  EXPECT_EQ(options.retries, 2U);
  EXPECT_EQ(options.every, std::chrono::milliseconds(500));
  EXPECT_EQ(options.count, 3U);
  EXPECT_EQ(options.wait, std::chrono::seconds(1));
  EXPECT_EQ(options.dtr, true);
  EXPECT_EQ(options.rts, false);
  EXPECT_EQ(Parse("--dtr keep id").dtr, std::nullopt);
}

TEST(ParseArguments, ListeningMayHaveATime) {
  for (const char* line : {"--listen 2.5 id", "--listen=2.5 id", "id --listen 2.5"}) {
    const Options options = Parse(line);
    EXPECT_EQ(options.error, QString()) << line;
    EXPECT_TRUE(options.listen);
    EXPECT_EQ(options.listenFor, std::chrono::milliseconds(2500)) << line;
    EXPECT_EQ(options.commands, Words({"id"})) << line;
  }
  for (const char* line : {"--listen id", "--listen -- id", "id --listen"}) {
    const Options options = Parse(line);
    EXPECT_TRUE(options.listen) << line;
    EXPECT_EQ(options.listenFor, std::nullopt) << line;
    EXPECT_EQ(options.commands, Words({"id"})) << line;
  }
  EXPECT_EQ(Parse("--listen -- 5").commands, Words({"5"}));
  EXPECT_EQ(Parse("--port --listen 5").commands, Words({"5"}));
  EXPECT_EQ(Parse("--listen").error, QString()) << "needs no command";
  EXPECT_NE(Parse("--listen 0").error, QString());
  EXPECT_NE(Parse("--listen=x").error, QString());
}

TEST(ParseArguments, WrongValuesAreNamedWithTheRightOnes) {
  const std::vector<std::pair<const char*, const char*>> rows{
      {"--bps 0", "--bps 0: it must be a whole number from 1 to 2147483647"},
      {"--bps +9600", "--bps +9600: it must be a whole number from 1 to 2147483647"},
      {"--bps 4294967296", "--bps 4294967296: it must be a whole number from 1 to 2147483647"},
      {"--data-bits 9", "--data-bits 9: it must be 5, 6, 7 or 8"},
      {"--parity mark", "--parity mark: it must be Odd, Even or None"},
      {"--stop-bits 3", "--stop-bits 3: it must be 1, 1.5 or 2"},
      {"--delimiter NUL", "--delimiter NUL: it must be CR, LF, CRLF or STX_ETX"},
      {"--buffer 4K", "--buffer 4K: it must be 1K, 2K or 6K"},
      {"--speed \x1b", "--speed <ESC>: it must be HIGH or LOW"},
      {"--timeout 0", "--timeout 0: it must be a number of seconds, such as 2 or 0.25"},
      {"--timeout 1e3", "--timeout 1e3: it must be a number of seconds, such as 2 or 0.25"},
      {"--retry -1", "--retry -1: it must be a whole number from 0 to 2147483647"},
      {"--count 0", "--count 0: it must be a whole number from 1 to 2147483647"},
      {"--every 0", "--every 0: it must be a number of seconds, such as 2 or 0.25"},
      {"--dtr up", "--dtr up: it must be on, off or keep"},
      {"--raw --json", "--raw, --json and --csv exclude each other"},
      {"--raw --timestamps", "--raw and --timestamps exclude each other"},
      {"--listen --every 1", "--listen comes after the last round: --every needs --count with it"},
      {"--settings a --defaults", "--settings and --defaults exclude each other"},
  };
  for (const auto& [words, error] : rows) {
    EXPECT_EQ(Parse((QByteArray(words) + " id").constData()).error, QString::fromLatin1(error)) << words;
  }
}

TEST(SecondsIn, AreReadToTheMillisecond) {
  using std::chrono::milliseconds;
  for (const auto& [text, time] :
       {std::pair{"2", 2000}, {"0.25", 250}, {".5", 500}, {"3.", 3000}, {"0", 0}, {"0.0004", 0}}) {
    EXPECT_EQ(SecondsIn(QString::fromLatin1(text)), milliseconds(time)) << text;
  }
  EXPECT_EQ(SecondsIn(QStringLiteral("1000000")), kLongestTime);
  for (const char* text : {"", ".", "-1", "+1", "1e3", "1,5", " 1", "1s", "nan", "inf", "1000001", "1.2.3"}) {
    EXPECT_EQ(SecondsIn(QString::fromLatin1(text)), std::nullopt) << text;
  }
}

TEST(ParseArguments, HelpAndVersionNeedNoCommand) {
  EXPECT_TRUE(Parse("--help").help);
  EXPECT_EQ(Parse("--help").error, QString());
  EXPECT_TRUE(Parse("--version").version);
  EXPECT_EQ(Parse("--version").error, QString());
}

TEST(Usage, NamesEveryOptionInLinesThatFitATerminal) {
  const QString usage = QString::fromLatin1(kUsage);
  for (const OptionName& each : KnownOptions()) {
    const QRegularExpression name(QStringLiteral("--%1(?![a-z-])").arg(QLatin1String(each.name)));
    EXPECT_TRUE(usage.contains(name)) << each.name;
  }
  for (const QString& line : usage.split(u'\n')) EXPECT_LE(line.size(), 80) << line.toStdString();
}

}  // namespace
}  // namespace quarn::send
