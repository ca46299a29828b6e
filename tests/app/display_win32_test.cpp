#include <gtest/gtest.h>
#include <windows.h>

#include <QDialog>
#include <QTest>

#include "app/display.h"
#include "support/waits.h"

namespace quarn {
namespace {

TEST(DisplayWin32, AWindowHasTheDotsPerInchThatTheSystemGivesIt) {
  QDialog window;
  EXPECT_EQ(WindowDpi(window), 0) << "there is no window yet";
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, test::kLongestWaitMs));
  EXPECT_EQ(WindowDpi(window), 96);
}

TEST(DisplayWin32, TheMessageFontIsTheSystems) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  static_assert(sizeof metrics == 504);
  ASSERT_NE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0), 0);
  const LONG before = metrics.lfMessageFont.lfHeight;
  metrics.lfMessageFont.lfHeight = -23;
  ASSERT_NE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0), 0);
  EXPECT_EQ(MessageFontHeight(), 23);
  metrics.lfMessageFont.lfHeight = before;
  ASSERT_NE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0), 0);
}

}  // namespace
}  // namespace quarn
