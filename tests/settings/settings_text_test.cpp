#include "settings/settings_text.h"

#include "base/bounds.h"
#include "settings/settings_test_support.h"

namespace quarn {
namespace {

TEST(DecodeSettingsText, AcceptsBothLineEndsAndAnOptionalByteOrderMark) {
  const QString text = QStringLiteral("a\nb\n");
  EXPECT_EQ(DecodeSettingsText("a\nb\n"), text);
  EXPECT_EQ(DecodeSettingsText("a\r\nb\r\n"), text);
  EXPECT_EQ(DecodeSettingsText("\xEF\xBB\xBF"
                               "a\r\nb\n"),
            text);
}

TEST(DecodeSettingsText, TakesOnlyTheFirstMarkForAMark) {
  EXPECT_EQ(DecodeSettingsText("\xEF\xBB\xBF\xEF\xBB\xBFx"), QStringLiteral("\uFEFFx"));
  EXPECT_EQ(DecodeSettingsText("\xEF\xBB\xBF"), QString());
  EXPECT_EQ(DecodeSettingsText(""), QString());
}

TEST(DecodeSettingsText, KeepsALoneCarriageReturn) {
  EXPECT_EQ(DecodeSettingsText("a\rb\r\r\nc\r"), QStringLiteral("a\rb\r\nc\r"));
}

TEST(DecodeSettingsText, RefusesWhatIsNotUtf8) {
  for (const char* bytes : {"A=\xFF", "A=\xC3", "A=\xC0\xAF", "A=\xED\xA0\x80", "A=\xF4\x90\x80\x80",
                            "A=\xE2\x82", "\x80", "A=\xE9t\xE9\n"}) {
    EXPECT_EQ(DecodeSettingsText(bytes), std::nullopt) << QByteArray(bytes).toHex().constData();
  }
}

TEST(DecodeSettingsText, LeavesOutACharacterThatCutBytesEndIn) {
  EXPECT_EQ(DecodeSettingsText("A=\xE2\x82", BytesAre::CutShort), QStringLiteral("A="));
  EXPECT_EQ(DecodeSettingsText("A=\xFF\n", BytesAre::CutShort), std::nullopt);
}

TEST(EncodeSettingsText, WritesTheMarkAndBothLineEndCharacters) {
  EXPECT_EQ(EncodeSettingsText(QStringLiteral("a\nb")), QByteArray("\xEF\xBB\xBF"
                                                                   "a\r\nb"));
  EXPECT_EQ(EncodeSettingsText(QString()), QByteArray("\xEF\xBB\xBF"));
}

TEST(EncodeSettingsText, IsUndoneByDecoding) {
  for (const QString& text :
       {QStringLiteral("A=\u00E9\u20AC\U0001F600\uFFFD\n"), QStringLiteral("a\r\nb\r\r\n\r"),
        QStringLiteral("\uFEFFx\n"), QString(u'\0') + QStringLiteral("x\u001Ay\n")}) {
    EXPECT_EQ(DecodeSettingsText(EncodeSettingsText(text)), text);
  }
}

TEST(NormalisedText, IsVersionBeginSortedEntriesEnd) {
  EXPECT_EQ(NormalisedText({QStringLiteral("b=2"), QString(), QStringLiteral("A=1")}),
            QStringLiteral(".VER=Quarn  (Ver. 1.00)\n.BEGIN\nA=1\nb=2\n.END\n"));
  EXPECT_EQ(NormalisedText({}), QStringLiteral(".VER=Quarn  (Ver. 1.00)\n.BEGIN\n.END\n"));
}

TEST(KeyPart, ReachesToTheFirstEqualsSign) {
  EXPECT_EQ(KeyPart(u"MEM0=a=b"), u"MEM0=");
  EXPECT_EQ(KeyPart(u"=x"), u"=");
  EXPECT_EQ(KeyPart(u"no equals"), u"no equals");
  EXPECT_EQ(KeyPart(u""), u"");
}

struct Seen {};

TEST(BoundsErrorHandler, MayLeaveByThrowing) {
  const BoundsErrorHandler before = SetBoundsErrorHandler([](const PassedLimit&) { throw Seen{}; });
  EXPECT_THROW((void)FindValue(QStringLiteral("A=") + QString(1024, u'x'), SettingsKey(u"A=")), Seen);
  EXPECT_NE(SetBoundsErrorHandler(before), nullptr);
}

TEST(BoundsErrorHandlerDeathTest, CannotLetTheProgramGoOn) {
  EXPECT_DEATH(
      {
        SetBoundsErrorHandler(
            [](const PassedLimit& passed) { std::fprintf(stderr, "told: %s\n", passed.name); });
        FatalBoundsError("value", 1023, 1024);
      },
      "^told: value\nquarn: bounds error: value of 1024 characters, at most 1023 fit\n$");
}

}  // namespace
}  // namespace quarn
