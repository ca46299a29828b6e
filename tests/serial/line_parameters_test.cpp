#include "serial/line_parameters.h"

#include "serial/line_test_support.h"
#include "settings/setting_values.h"

namespace quarn {
namespace {

TEST(LineParameters, EveryListedRateIsTakenAsItIs) {
  for (const std::uint32_t rate : {110U, 300U, 600U, 1200U, 2400U, 4800U, 9600U, 14400U, 19200U, 38400U,
                                   56000U, 57600U, 115200U, 128000U, 256000U}) {
    EXPECT_EQ(BaudRateOf(QString::number(rate)), rate);
  }
  for (const SettingValue& each : values::kBitRates) {
    EXPECT_EQ(BaudRateOf(each.text.toString()), static_cast<std::uint32_t>(each.number));
  }
}

TEST(LineParameters, AnyOtherRateTextGives9600) {
  for (const char* text :
       {"", "abc", "0", "1", "111", "12345", "921600", " 300", "300 ", "+300", "0300", "300.0"}) {
    EXPECT_EQ(BaudRateOf(QString::fromLatin1(text)), 9600U) << text;
  }
}

TEST(LineParameters, DataBits) {
  EXPECT_EQ(ByteSizeOf(QStringLiteral("5")), 5);
  EXPECT_EQ(ByteSizeOf(QStringLiteral("6")), 6);
  EXPECT_EQ(ByteSizeOf(QStringLiteral("7")), 7);
  for (const char* text : {"8", "", "9", "4", "0", "five", " 5", "7 ", "77"}) {
    EXPECT_EQ(ByteSizeOf(QString::fromLatin1(text)), 8) << text;
  }
}

TEST(LineParameters, StopBitsText) {
  EXPECT_EQ(StopBitsOf(QStringLiteral("1.5")), StopBits::OnePointFive);
  EXPECT_EQ(StopBitsOf(QStringLiteral("2")), StopBits::Two);
  for (const char* text : {"1", "", "3", "1,5", "2.0", "0", " 2"}) {
    EXPECT_EQ(StopBitsOf(QString::fromLatin1(text)), StopBits::One) << text;
  }
}

TEST(LineParameters, ParityText) {
  EXPECT_EQ(ParityOf(QStringLiteral("Odd")), Parity::Odd);
  EXPECT_EQ(ParityOf(QStringLiteral("Even")), Parity::Even);
  for (const char* text : {"None", "", "odd", "EVEN", "Mark", "Space", "Odd "}) {
    EXPECT_EQ(ParityOf(QString::fromLatin1(text)), Parity::None) << text;
  }
}

TEST(LineParameters, TheNumbersAreTheCommApis) {
  EXPECT_EQ(static_cast<int>(StopBits::One), 0);
  EXPECT_EQ(static_cast<int>(StopBits::OnePointFive), 1);
  EXPECT_EQ(static_cast<int>(StopBits::Two), 2);
  EXPECT_EQ(static_cast<int>(Parity::None), 0);
  EXPECT_EQ(static_cast<int>(Parity::Odd), 1);
  EXPECT_EQ(static_cast<int>(Parity::Even), 2);
}

struct SilenceRow {
  const char* rate;
  std::uint32_t high;
  std::uint32_t low;
};

void PrintTo(const SilenceRow& row, std::ostream* out) { *out << row.rate << " bps"; }

class SilenceOfRate : public testing::TestWithParam<SilenceRow> {};

TEST_P(SilenceOfRate, EndsAResponse) {
  const QString rate = QString::fromLatin1(GetParam().rate);
  const LineTimeouts high{GetParam().high, 10, 50, 10, 50};
  EXPECT_EQ(TimeoutsOf(rate, QStringLiteral("HIGH")), high);
  EXPECT_EQ(TimeoutsOf(rate, QStringLiteral("LOW")), (LineTimeouts{GetParam().low, 15, 75, 15, 75}));
  for (const char* unknown : {"", "low", "Low", "MEDIUM", "LOW "}) {
    EXPECT_EQ(TimeoutsOf(rate, QString::fromLatin1(unknown)), high) << unknown;
  }
}

// The silence follows the number in the text, even if the line then runs at 9600 bps.
INSTANTIATE_TEST_SUITE_P(
    LineParameters, SilenceOfRate,
    testing::Values(SilenceRow{"110", 7854, 11781}, SilenceRow{"300", 2880, 4320},
                    SilenceRow{"600", 1440, 2160}, SilenceRow{"1200", 720, 1080},
                    SilenceRow{"2400", 360, 540}, SilenceRow{"4800", 180, 270}, SilenceRow{"9600", 90, 135},
                    SilenceRow{"14400", 60, 90}, SilenceRow{"19200", 44, 66}, SilenceRow{"38400", 21, 31},
                    SilenceRow{"38401", 12, 18}, SilenceRow{"56000", 12, 18}, SilenceRow{"57600", 12, 18},
                    SilenceRow{"115200", 12, 18}, SilenceRow{"128000", 12, 18}, SilenceRow{"256000", 12, 18},
                    SilenceRow{"1000", 864, 1296}, SilenceRow{"4800 bps", 180, 270},
                    SilenceRow{"1", 864000, 1296000}, SilenceRow{"-1", 12, 18}, SilenceRow{"0", 90, 135},
                    SilenceRow{"abc", 90, 135}, SilenceRow{"", 90, 135}));

TEST(LineParameters, TheNumberBehindTheTimeouts) {
  EXPECT_EQ(NominalRateOf(QStringLiteral("256000")), 256000U);
  EXPECT_EQ(NominalRateOf(QStringLiteral("12345")), 12345U);
  EXPECT_EQ(NominalRateOf(QStringLiteral("  300x")), 300U);
  EXPECT_EQ(NominalRateOf(QStringLiteral("0")), 9600U);
  EXPECT_EQ(NominalRateOf(QStringLiteral("abc")), 9600U);
  EXPECT_EQ(NominalRateOf(QString()), 9600U);
}

TEST(LineParameters, DescribedForPeople) {
  EXPECT_EQ(DescribeLineState({}), QStringLiteral("9600 bps, 8 data bits, no parity, 1 stop bit"));
  EXPECT_EQ(DescribeLineState({256000, 5, StopBits::OnePointFive, Parity::Odd}),
            QStringLiteral("256000 bps, 5 data bits, odd parity, 1.5 stop bits"));
  EXPECT_EQ(DescribeLineState({110, 7, StopBits::Two, Parity::Even}),
            QStringLiteral("110 bps, 7 data bits, even parity, 2 stop bits"));
}

}  // namespace
}  // namespace quarn
