#include "base/printable.h"

#include <gtest/gtest.h>

namespace quarn {
namespace {

TEST(Printable, IsOnOneLineAndInItsOrder) {
  EXPECT_EQ(Printable(QStringLiteral("COM3 \u00b5 \u65e5 \U0001F600")),
            QStringLiteral("COM3 \u00b5 \u65e5 \U0001F600"));
  for (const char16_t each :
       {u'\0', u'\n', u'\r', u'\t', u'\x7f', u'\u0085', u'\u2028', u'\u2029', u'\u202e'}) {
    EXPECT_FALSE(IsPrintable(each)) << static_cast<int>(each);
    EXPECT_EQ(Printable(u'a' + QString(QChar(each)) + u'b'), QStringLiteral("a?b")) << static_cast<int>(each);
  }
  EXPECT_TRUE(IsPrintable(U'\U0001F600'));
}

}  // namespace
}  // namespace quarn
