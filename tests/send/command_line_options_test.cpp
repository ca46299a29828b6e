#include "send/command_line_options.h"

#include "tests/line/line_test_support.h"

namespace quarn::send {
namespace {

Options Parse(const char* line) {
  return ParseArguments(QString::fromLatin1(line).split(u' ', Qt::SkipEmptyParts));
}

TEST(ParseArguments, CommandsAreWhatIsLeft) {
  const Options options = Parse("id meas? -x");
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands,
            (QStringList{QStringLiteral("id"), QStringLiteral("meas?"), QStringLiteral("-x")}));
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
  EXPECT_EQ(options.commands, (QStringList{QStringLiteral("id"), QStringLiteral("status")}));
}

TEST(ParseArguments, AfterTwoDashesEverythingIsACommand) {
  const Options options = Parse("--raw -- --port --help --");
  EXPECT_EQ(options.error, QString());
  EXPECT_TRUE(options.raw);
  EXPECT_FALSE(options.help);
  EXPECT_EQ(options.commands,
            (QStringList{QStringLiteral("--port"), QStringLiteral("--help"), QStringLiteral("--")}));
}

TEST(ParseArguments, AnEmptyCommandIsACommand) {
  const Options options = ParseArguments({QString()});
  EXPECT_EQ(options.error, QString());
  EXPECT_EQ(options.commands, QStringList{QString()});
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
  EXPECT_EQ(Parse("--loud id").error, QStringLiteral("unknown option: --loud"));
  EXPECT_EQ(Parse("--port=COM7 id").error, QStringLiteral("unknown option: --port=COM7"));
}

TEST(ParseArguments, HelpAndVersionNeedNoCommand) {
  EXPECT_TRUE(Parse("--help").help);
  EXPECT_EQ(Parse("--help").error, QString());
  EXPECT_TRUE(Parse("--version").version);
  EXPECT_EQ(Parse("--version").error, QString());
}

}  // namespace
}  // namespace quarn::send
