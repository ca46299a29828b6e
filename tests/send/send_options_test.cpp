#include "send/send_options.h"

#include "serial/line_test_support.h"

namespace quarn::send {
namespace {

Options Parse(const char* line) {
  Arguments arguments;
  for (const QByteArray& word : QByteArray(line).split(' ')) {
    if (!word.isEmpty()) arguments.push_back({QString::fromLatin1(word), word});
  }
  return ParseArguments(arguments);
}

TEST(ParseArguments, CommandsAreWhatIsLeft) {
  const Options options = Parse("id meas? +x");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands, (QByteArrayList{"id", "meas?", "+x"}));
  EXPECT_EQ(options.port, QString());
  EXPECT_EQ(options.settingsFile, QString());
  EXPECT_FALSE(options.raw);
  EXPECT_FALSE(options.help);
  EXPECT_FALSE(options.version);
}

TEST(ParseArguments, OptionsMayStandAnywhere) {
  const Options options = Parse("--port COM7 id --raw --settings a.qrn status");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.port, QStringLiteral("COM7"));
  EXPECT_EQ(options.settingsFile, QStringLiteral("a.qrn"));
  EXPECT_TRUE(options.raw);
  EXPECT_EQ(options.commands, (QByteArrayList{"id", "status"}));
}

TEST(ParseArguments, AfterTwoDashesEverythingIsACommand) {
  const Options options = Parse("--raw -- --port --help -5 - --");
  EXPECT_EQ(options.error, QString());
  EXPECT_TRUE(options.raw);
  EXPECT_FALSE(options.help);
  EXPECT_EQ(options.commands, (QByteArrayList{"--port", "--help", "-5", "-", "--"}));
}

TEST(ParseArguments, AnEmptyCommandIsACommand) {
  const Options options = ParseArguments({{QString(), QByteArray()}});
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands, QByteArrayList{QByteArray()});
}

TEST(ParseArguments, AValueMayLookLikeAnOption) {
  EXPECT_EQ(Parse("--settings --raw id").settingsFile, QStringLiteral("--raw"));
  EXPECT_FALSE(Parse("--settings --raw id").raw);
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
  for (const char* word : {"--loud", "--port=COM7", "-p", "-h", "-", "-5", "---"}) {
    EXPECT_EQ(Parse(word).error, QStringLiteral("unknown option: ") + QString::fromLatin1(word) + hint);
    EXPECT_EQ(Parse(word).commands, QByteArrayList{});
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
  EXPECT_EQ(ParseArguments({{{}, "\xff"}}).commands, QByteArrayList{"\xff"});
  const Options command = ParseArguments({{QStringLiteral("5 \u20ac"), {}}});
  EXPECT_EQ(command.error,
            QStringLiteral("\"5 <0xe2><0x82><0xac>\" cannot be sent: the system's character set "
                           "lacks some of it"));
}

TEST(ParseArguments, AnErrorSteersNoTerminal) {
  const Options options = ParseArguments({{QStringLiteral("-\x1b[2J"), "-\x1b[2J"}});
  EXPECT_TRUE(options.error.startsWith(QStringLiteral("unknown option: -<ESC>[2J ")));
}

TEST(ParseArguments, HelpAndVersionNeedNoCommand) {
  EXPECT_TRUE(Parse("--help").help);
  EXPECT_EQ(Parse("--help").error, QString());
  EXPECT_TRUE(Parse("--version").version);
  EXPECT_EQ(Parse("--version").error, QString());
}

}  // namespace
}  // namespace quarn::send
