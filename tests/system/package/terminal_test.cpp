// The programs with a terminal that cannot be written, or without one.

#include <gtest/gtest.h>

#include "system/package/package_files.h"

namespace quarn {
namespace {

/// Standard error and exit status of a command that starts with one of the programs.
std::string SaidBy(const std::string& program, const std::string& rest) {
  return OutputOf("'" QUARN_PROGRAMS "/" + program + "' " + rest + "; echo $?");
}

TEST(Terminal, AnswersThatCannotBeWrittenAreNoSuccess) {
  for (const std::string option : {"--help", "--version"}) {
    for (const auto& [program, status] :
         {std::pair{"quarn", "74"}, {"quarn-send", "74"}, {"quarn-device", "1"}}) {
      const std::string said = std::string(program) + ": standard output: ";
      EXPECT_EQ(SaidBy(program, "2>&1 >/dev/full " + option),
                said + "No space left on device\n" + status + "\n");
      EXPECT_EQ(SaidBy(program, "2>&1 >&- " + option), said + "Bad file descriptor\n" + status + "\n");
    }
  }
}

TEST(Terminal, AWordWithADashIsNoFile) {
  const std::string usage = "usage: quarn [FILE]\n       quarn --demo\n       quarn --help | --version\n64\n";
  for (const std::string word : {"--foo", "-h", "-x.qrn"}) {
    EXPECT_EQ(SaidBy("quarn", "2>&1 " + word), "quarn: unknown option: " + word + "\n" + usage);
  }
  EXPECT_EQ(SaidBy("quarn", "2>&1 \"$(printf '%s\\033[2J' -)\""),
            "quarn: unknown option: -<ESC>[2J\n" + usage);
}

}  // namespace
}  // namespace quarn
