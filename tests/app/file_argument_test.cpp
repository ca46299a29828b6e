#include "app/file_argument.h"

#include <gtest/gtest.h>

#include "app/platform.h"
#include "app/start_options.h"
#include "identity.h"

namespace quarn {
namespace {

using namespace Qt::StringLiterals;

TEST(FileArgument, TheProgramAloneNamesNone) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Tools\\Quarn.exe\""), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Tools\\Quarn.exe\" "), QString());
  EXPECT_EQ(FileOfCommandLine(u""), QString());
  EXPECT_EQ(FileOfCommandLine(u"Quarn.exe"), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"Quarn.exe"), QString());
}

TEST(FileArgument, AnUnquotedArgumentStandsAsItIs) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" C:\\a.qrn"), u"C:\\a.qrn"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" a b.qrn "), u"a b.qrn "_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\"  a.qrn"), u" a.qrn"_s);
}

TEST(FileArgument, AQuotedArgumentLosesItsFirstAndLastCharacter) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"C:\\my files\\a.qrn\""), u"C:\\my files\\a.qrn"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"a.qrn"), u"a.qr"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"\""), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \""), QString());
}

TEST(FileArgument, FitsABufferOf260WithItsEnd) {
  const QString longest(258, u'x');
  EXPECT_EQ(WithinPathLimit(longest), longest);
  EXPECT_DEATH((void)WithinPathLimit(QString(259, u'x')), "file name on the command line.*258");
}

TEST(AnswerOnTerminal, OnlyWhenAsked) {
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s}), QString());
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s, u"help.qrn"_s}), QString());
  EXPECT_TRUE(AnswerOnTerminal({u"quarn"_s, u"--help"_s}).contains(u"usage: quarn [FILE]"_s));
  EXPECT_TRUE(AnswerOnTerminal({u"quarn"_s, u"--help"_s})
                  .endsWith(u"  --version  print name, version and build date\n"_s + FileArgumentNote()));
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s, u"--version"_s}),
            QStringLiteral("%1, build %2\n")
                .arg(QLatin1String(identity::kNameAndVersion), QLatin1String(identity::kBuildDate)));
}

TEST(Demo, IsAnOptionOfItsOwn) {
  EXPECT_TRUE(IsDemo({u"quarn"_s, u"--demo"_s}));
  EXPECT_FALSE(IsDemo({u"quarn"_s, u"demo"_s}));
  EXPECT_EQ(WrongOption({u"quarn"_s, u"--demo"_s, u"-style"_s, u"fusion"_s}), QString());
  EXPECT_EQ(WrongOption({u"quarn"_s, u"--demo"_s, u"--foo"_s}), u"--foo"_s);
  EXPECT_EQ(AnswerAtOnce({u"quarn"_s, u"--demo"_s}), std::nullopt);
}

TEST(WrongOption, IsAWordWithADashThatNobodyKnows) {
  for (const QString& word :
       {u"--foo"_s, u"-h"_s, u"-?"_s, u"-"_s, u"--"_s, u"-x.qrn"_s, u"--platform-x"_s}) {
    EXPECT_EQ(WrongOption({u"quarn"_s, word}), word);
    EXPECT_EQ(WrongOption({u"quarn"_s, u"-style"_s, u"fusion"_s, word, u"a.qrn"_s}), word);
  }
  for (const QStringList& words : {QStringList{},
                                   {u"a.qrn"_s},
                                   {u"./-x.qrn"_s},
                                   {u"C:\\my"_s, u"-"_s, u"files\\a.qrn"_s},
                                   {u"-platform"_s, u"offscreen"_s},
                                   {u"--platform=offscreen"_s, u"a.qrn"_s},
                                   {u"-session"_s, u"-1"_s},
                                   {u"-reverse"_s, u"a.qrn"_s},
                                   {u"-style"_s}}) {
    EXPECT_EQ(WrongOption(QStringList{u"quarn"_s} + words), QString()) << words.join(u' ').toStdString();
  }
}

TEST(WrongOption, IsNoValueOfAnOptionThatTakesOne) {
  const QString wrong = u"--foo"_s;
  for (const char* name :
       {"display", "geometry", "icon", "platform", "platformpluginpath", "platformtheme", "plugin",
        "qwindowgeometry", "qwindowicon", "qwindowtitle", "session", "style", "stylesheet", "title"}) {
    const QString option = QLatin1Char('-') + QLatin1String(name);
    EXPECT_EQ(WrongOption({u"quarn"_s, option, wrong}), QString()) << name;
    EXPECT_EQ(WrongOption({u"quarn"_s, option + u"=x"_s, wrong}), wrong) << name;
  }
  for (const char* name : {"dograb", "nograb", "reverse", "widgetcount"}) {
    EXPECT_EQ(WrongOption({u"quarn"_s, QLatin1Char('-') + QLatin1String(name), wrong}), wrong) << name;
  }
}

TEST(IsAnsweredAtOnce, IsWhatNeedsNoWindow) {
  for (const Words& words : {Words{u"quarn", u"--help"},
                             {u"quarn", u"a.qrn", u"--version"},
                             {u"quarn", u"--demo", u"--help"},
                             {u"quarn", u"-h"},
                             {u"quarn", u"--demo", u"--foo"},
                             {u"quarn", u"-style", u"fusion", u"--foo"}}) {
    EXPECT_TRUE(IsAnsweredAtOnce(words)) << QStringView(words.back()).toLatin1().constData();
  }
  for (const Words& words : {Words{u"quarn"},
                             {},
                             {u"quarn", u"a.qrn"},
                             {u"quarn", u"--demo"},
                             {u"quarn", u"-style", u"fusion"},
                             {u"quarn", u"-platform=x", u"--demo"},
                             {u"quarn", u"C:\\my", u"-", u"files\\a.qrn"}}) {
    EXPECT_FALSE(IsAnsweredAtOnce(words)) << (words.empty() ? 0 : words.size());
  }
}

TEST(AnswerAtOnce, IsForThoseWhoNeedNoWindow) {
  EXPECT_EQ(AnswerAtOnce({u"quarn"_s, u"a.qrn"_s}), std::nullopt);
  EXPECT_EQ(AnswerAtOnce({u"quarn"_s, u"--foo"_s}), 64);
  EXPECT_EQ(AnswerAtOnce({u"quarn"_s, u"-h"_s}), 64);
  EXPECT_EQ(AnswerAtOnce({u"quarn"_s, u"--version"_s}), 0);
}

}  // namespace
}  // namespace quarn
