#include "settings/setting_values.h"

#include <gtest/gtest.h>

#include <QString>
#include <limits>

namespace quarn {
namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

struct NumberCase {
  const char16_t* text;
  int value;
};

class ToIntegerTest : public testing::TestWithParam<NumberCase> {};

TEST_P(ToIntegerTest, ReadsTheNumberTheTextBeginsWith) {
  EXPECT_EQ(ToInteger(QStringView(GetParam().text)), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Table, ToIntegerTest,
                         testing::Values(NumberCase{u"", 0}, NumberCase{u"9600", 9600}, NumberCase{u"0", 0},
                                         NumberCase{u"007", 7}, NumberCase{u"12K", 12}, NumberCase{u"1.5", 1},
                                         NumberCase{u"K12", 0}, NumberCase{u"COM3", 0},
                                         NumberCase{u" \t\n\v\f\r42", 42}, NumberCase{u"4 2", 4},
                                         NumberCase{u"+5", 5}, NumberCase{u"-5", -5}, NumberCase{u"- 5", 0},
                                         NumberCase{u"--5", 0}, NumberCase{u"+-5", 0}, NumberCase{u"-", 0},
                                         NumberCase{u" ", 0}, NumberCase{u"\u00A05", 0},
                                         NumberCase{u"\u0665", 0}, NumberCase{u"2147483647", kMax},
                                         NumberCase{u"2147483648", kMax}, NumberCase{u"-2147483647", -kMax},
                                         NumberCase{u"-2147483648", kMin}, NumberCase{u"-2147483649", kMin},
                                         NumberCase{u"99999999999999999999999999", kMax},
                                         NumberCase{u"-99999999999999999999999999", kMin}));

TEST(ToInteger, StopsAtAnEmbeddedNul) {
  EXPECT_EQ(ToInteger(QStringView(u"12\0"
                                  u"34",
                                  5)),
            12);
}

}  // namespace
}  // namespace quarn
