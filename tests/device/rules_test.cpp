#include "device/rules.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quarn::device {
namespace {

template <typename Kind>
const Kind& StepOf(const Rules& rules, std::size_t rule, std::size_t step) {
  return std::get<Kind>(rules.at(rule).steps.at(step));
}

std::string ErrorOf(std::string_view text) {
  try {
    ParseRules(text);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

TEST(ParseRules, ReadsEveryKindOfAnswer) {
  const Rules rules = ParseRules(
      "# a comment\n"
      "\n"
      "\"id\" -> line \"SIM\"\r\n"
      "  \"slow\"->\"one \" 30 \"two\\r\"\n"
      "\"big\" -> \"ab\" * 3 \"\\r\"\n"
      "\"e\" -> echo\n"
      "\"f\" -> flood\n"
      "\"h\" -> hangup\n"
      "* -> silence");
  ASSERT_EQ(rules.size(), 7U);
  EXPECT_EQ(StepOf<Line>(rules, 0, 0).text, "SIM");
  EXPECT_EQ(StepOf<Bytes>(rules, 1, 0).bytes, "one ");
  EXPECT_EQ(StepOf<PauseMs>(rules, 1, 1).ms, 30);
  EXPECT_EQ(StepOf<Bytes>(rules, 1, 2).bytes, "two\r");
  EXPECT_EQ(StepOf<Bytes>(rules, 2, 0).bytes, "ababab");
  EXPECT_TRUE(std::holds_alternative<Echo>(rules[3].steps[0]));
  EXPECT_TRUE(std::holds_alternative<Flood>(rules[4].steps[0]));
  EXPECT_TRUE(std::holds_alternative<HangUp>(rules[5].steps[0]));
  EXPECT_TRUE(rules[6].any);
  EXPECT_TRUE(rules[6].steps.empty());
}

TEST(ParseRules, EscapesStandForBytes) {
  const Rules rules = ParseRules(R"("a" -> "\x02\xff\x00\r\n\t\\\"")");
  EXPECT_EQ(StepOf<Bytes>(rules, 0, 0).bytes, std::string("\x02\xff\x00\r\n\t\\\"", 8));
}

TEST(ParseRules, NamesTheLineThatIsNoRule) {
  EXPECT_EQ(ErrorOf("\"a\" -> echo\nnonsense\n"), "line 2: a text in quotes is expected");
  EXPECT_EQ(ErrorOf("\"a\" echo"), "line 1: \"->\" is expected after the command");
  EXPECT_EQ(ErrorOf("\"a\" ->"), "line 1: an answer is expected");
  EXPECT_EQ(ErrorOf("\"a\" -> dance"), "line 1: an answer is expected");
  EXPECT_EQ(ErrorOf("\"a"), "line 1: the closing quote is missing");
  EXPECT_EQ(ErrorOf("\"a\" -> \"\\q\""), "line 1: unknown escape");
  EXPECT_EQ(ErrorOf("\"a\" -> \"\\x1\""), "line 1: two hexadecimal digits are expected");
  EXPECT_EQ(ErrorOf("\"a\" -> \"\\"), "line 1: the line ends in the middle of an escape");
  EXPECT_EQ(ErrorOf("\"a\" -> \"x\" * many"), "line 1: a number is expected");
  EXPECT_EQ(ErrorOf("\"a\" -> \"x\" * 1000001"), "line 1: too many repeats");
  EXPECT_EQ(ErrorOf("\"a\" -> 99999999999"), "line 1: a number is expected");
  EXPECT_EQ(ErrorOf("\"a\" -> silence echo"), "line 1: nothing can follow a silence");
}

TEST(FindRule, TheFirstThatFitsWins) {
  const Rules rules =
      ParseRules("\"a\" -> line \"1\"\n\"a\" -> line \"2\"\n* -> line \"any\"\n\"b\" -> line \"3\"");
  EXPECT_EQ(FindRule(rules, "a"), &rules[0]);
  EXPECT_EQ(FindRule(rules, "b"), &rules[2]);
  EXPECT_EQ(FindRule(ParseRules("\"a\" -> echo"), "b"), nullptr);
}

TEST(BuiltInRules, AnswerTheCommandsOfTheHandbook) {
  const Rules rules = BuiltInRules();
  for (const char* command : {"id", "*IDN?", "meas?", "temp?", "status", "list", "bytes", "slow", "big",
                              "mute", "flood", "unplug"}) {
    const Rule* rule = FindRule(rules, command);
    ASSERT_NE(rule, nullptr) << command;
    EXPECT_FALSE(rule->any) << command;
  }
  EXPECT_TRUE(FindRule(rules, "anything else")->any);
}

}  // namespace
}  // namespace quarn::device
