#include <gtest/gtest.h>

#include <array>
#include <regex>

#include "system/package/package_files.h"

namespace quarn {
namespace {

constexpr std::array kPrograms{"quarn", "quarn-send", "quarn-device"};

/// The text of a manual, without the backslashes before the hyphens of options.
std::string Manual(const std::string& program) {
  const std::string text = FilledInFile("linux/" + program + ".1");
  return std::regex_replace(text, std::regex(R"(\\-)"), "-");
}

TEST(Manuals, KnowTheOptionsOfTheProgramsAndNoOthers) {
  for (const char* program : kPrograms) {
    SCOPED_TRACE(program);
    const std::set<std::string> options = OptionsIn(OutputOfProgram(program, "--help"));
    EXPECT_TRUE(options.contains("--help") && options.contains("--version"));
    // Examples use other programs, too.
    const std::string manual = Manual(program);
    EXPECT_EQ(OptionsIn(manual.substr(0, manual.find("\n.SH EXAMPLES"))), options);
  }
}

TEST(Manuals, ExplainEachOptionInAnEntryOfItsOwn) {
  for (const char* program : kPrograms) {
    const std::string manual = Manual(program);
    for (const std::string& option : OptionsIn(OutputOfProgram(program, "--help"))) {
      const std::regex entry("\\.TP\\n\\.BI? " + option + "( |\\n)");
      EXPECT_TRUE(std::regex_search(manual, entry)) << program << " " << option;
    }
  }
}

}  // namespace
}  // namespace quarn
