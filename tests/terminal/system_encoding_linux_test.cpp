#include "terminal/system_encoding_linux.h"

#include "serial/line_test_support.h"
#include "support/made_locale_linux.h"

namespace quarn {
namespace {

TEST(EncodeText, TakesWhatHasAPlaceInTheEncodingAndNothingElse) {
  const QString units = QStringLiteral("\u00b5V");
  const QString price = QStringLiteral("5 \u20ac");
  EXPECT_EQ(EncodeText("UTF-8", units), "\xc2\xb5V");
  EXPECT_EQ(EncodeText("UTF-8", price), "5 \xe2\x82\xac");
  EXPECT_EQ(EncodeText("ISO-8859-1", units), "\xb5V");
  EXPECT_EQ(EncodeText("ISO-8859-1", price), std::nullopt);
  EXPECT_EQ(EncodeText("ISO-8859-15", price), "5 \xa4");
  EXPECT_EQ(EncodeText("EUC-JP", QStringLiteral("\u65e5\u672c")), "\xc6\xfc\xcb\xdc");
  EXPECT_EQ(EncodeText("ISO-8859-1", QStringLiteral("\U0001f600")), std::nullopt);
  EXPECT_EQ(EncodeText("ISO-8859-1", u""), "");
  EXPECT_EQ(EncodeText("no such encoding", u"a"), std::nullopt);
}

TEST(EncodeText, TakesNoHalfACharacter) {
  const QString half(QChar(0xD83D));
  EXPECT_EQ(EncodeText("UTF-8", half), std::nullopt);
  EXPECT_EQ(EncodeText("ISO-8859-1", half), std::nullopt);
}

TEST(DecodeText, IsTheWayBack) {
  EXPECT_EQ(DecodeText("UTF-8", "\xc2\xb5V"), QStringLiteral("\u00b5V"));
  EXPECT_EQ(DecodeText("ISO-8859-1", "\xb5V"), QStringLiteral("\u00b5V"));
  EXPECT_EQ(DecodeText("ISO-8859-1", ""), QString());
  EXPECT_EQ(DecodeText("UTF-8", "\xb5V"), std::nullopt);
  EXPECT_EQ(DecodeText("EUC-JP", "\xc6"), std::nullopt);
}

/// The output of the probe for the commands, with this locale in the environment.
QByteArray Probe(const QProcessEnvironment& environment, const QStringList& commands) {
  QProcess probe;
  probe.setProcessEnvironment(environment);
  probe.start(QStringLiteral(QUARN_ENCODING_PROBE), commands);
  EXPECT_TRUE(probe.waitForFinished());
  EXPECT_EQ(probe.exitCode(), 0);
  EXPECT_EQ(probe.readAllStandardError(), "");
  return probe.readAllStandardOutput();
}

QProcessEnvironment WithLocale(const char* name) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("LC_ALL"), QLatin1String(name));
  return environment;
}

QStringList Commands() { return {QStringLiteral("\u00b5V"), QStringLiteral("5 \u20ac")}; }

TEST(SystemEncoding, IsUtf8WithoutALocale) {
  for (const char* name : {"C", "POSIX", "C.UTF-8", "nowhere_AT.all"}) {
    const QByteArray printed = Probe(WithLocale(name), Commands());
    EXPECT_EQ(printed,
              "c2b5560d 5bc2b5565d0d 5bc2b5565d0d\n"
              "Error: Received Invalid Data\n"
              "3520e282ac0d 5b3520e282ac5d0d 5b3520e282ac5d0d\n"
              "Error: Received Invalid Data\n")
        << name;
  }
}

/// The log shows "[5 <U+20AC>]". Nothing is sent, not even a question mark instead of the character.
TEST(SystemEncoding, IsThatOfTheLocaleAndWhatItLacksIsNotSent) {
  const test::MadeLocale latin("ISO-8859-1");
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  latin.PutInto(environment);
  EXPECT_EQ(Probe(environment, Commands()),
            "b5560d 5bb5565d0d 5bc2b5565d0d\n"
            "Error: Received Invalid Data\n"
            " 5b35203c552b323041433e5d0d 5b35203c552b323041433e5d0d\n"
            "Error: Command Cannot Be Sent\n");
}

}  // namespace
}  // namespace quarn
