#include <gtest/gtest.h>

#include "serial/line_test_support.h"
#include "serial/serial_line.h"

namespace quarn {
namespace {

TEST(LineResult, WithoutAFailureTheOperationWasDone) {
  const LineResult result;
  EXPECT_TRUE(result);
  EXPECT_EQ(result.Failure().kind, LineError::None);
  EXPECT_EQ(result.Failure().reason, QString());
}

TEST(LineResult, CarriesTheFailure) {
  const LineResult result = LineFailure{LineError::Refused, QStringLiteral("COM3: refused")};
  EXPECT_FALSE(result);
  EXPECT_EQ(result.Failure().kind, LineError::Refused);
  EXPECT_EQ(result.Failure().reason, QStringLiteral("COM3: refused"));
}

TEST(LineResult, AFailureThatSaysNothingIsStillOne) { EXPECT_FALSE(LineResult(LineFailure())); }

}  // namespace
}  // namespace quarn
