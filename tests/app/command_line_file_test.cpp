#include "app/command_line_file.h"

#include <gtest/gtest.h>

#include "identity.h"

namespace quarn {
namespace {

using namespace Qt::StringLiterals;

TEST(CommandLineFile, TheProgramAloneNamesNone) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Tools\\Quarn.exe\""), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Tools\\Quarn.exe\" "), QString());
  EXPECT_EQ(FileOfCommandLine(u""), QString());
  EXPECT_EQ(FileOfCommandLine(u"Quarn.exe"), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"Quarn.exe"), QString());
}

TEST(CommandLineFile, AnUnquotedArgumentStandsAsItIs) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" C:\\a.qrn"), u"C:\\a.qrn"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" a b.qrn "), u"a b.qrn "_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\"  a.qrn"), u" a.qrn"_s);
}

TEST(CommandLineFile, AQuotedArgumentLosesItsFirstAndLastCharacter) {
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"C:\\my files\\a.qrn\""), u"C:\\my files\\a.qrn"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"a.qrn"), u"a.qr"_s);
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \"\""), QString());
  EXPECT_EQ(FileOfCommandLine(u"\"C:\\Quarn.exe\" \""), QString());
}

TEST(CommandLineFile, FitsABufferOf260WithItsEnd) {
  const QString longest(258, u'x');
  EXPECT_EQ(WithinPathLimit(longest), longest);
  EXPECT_DEATH((void)WithinPathLimit(QString(259, u'x')), "file name on the command line.*258");
}

#ifndef Q_OS_WIN
TEST(CommandLineFile, IsTheFirstArgument) {
  EXPECT_EQ(ReadCommandLineFile({u"quarn"_s}), QString());
  EXPECT_EQ(ReadCommandLineFile({u"quarn"_s, u"my file.qrn"_s, u"other.qrn"_s}), u"my file.qrn"_s);
  EXPECT_DEATH((void)ReadCommandLineFile({u"quarn"_s, QString(259, u'x')}), "command line");
}
#endif

TEST(AnswerOnTerminal, OnlyWhenAsked) {
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s}), QString());
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s, u"help.qrn"_s}), QString());
  EXPECT_TRUE(AnswerOnTerminal({u"quarn"_s, u"--help"_s}).contains(u"usage: quarn [FILE]"_s));
  EXPECT_EQ(AnswerOnTerminal({u"quarn"_s, u"--version"_s}),
            QStringLiteral("%1, build %2\n")
                .arg(QLatin1String(identity::kNameAndVersion), QLatin1String(identity::kBuildDate)));
}

}  // namespace
}  // namespace quarn
