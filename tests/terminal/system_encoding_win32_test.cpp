#include <windows.h>

#include "serial/line_test_support.h"
#include "terminal/system_encoding.h"

namespace quarn {
namespace {

TEST(SystemEncoding, IsTheAnsiCodePageAndWhatItLacksIsNothing) {
  ASSERT_EQ(GetACP(), 1252U) << "the code page of the tests";
  EXPECT_EQ(ToSystemEncoding(u"\u00b5V 5 \u20ac"), "\xb5V 5 \x80");
  EXPECT_EQ(ToSystemEncoding(u""), "");
  EXPECT_EQ(FromSystemEncoding("\xb5V 5 \x80"), QStringLiteral("\u00b5V 5 \u20ac"));
  // Not replaced, neither by a question mark nor by a similar letter.
  EXPECT_EQ(ToSystemEncoding(u"\u65e5"), std::nullopt);
  EXPECT_EQ(ToSystemEncoding(u"\u0101"), std::nullopt);
  EXPECT_EQ(ToSystemEncoding(QString(QChar(0xD83D))), std::nullopt);
}

}  // namespace
}  // namespace quarn
