#include "app/about_item.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <QDialog>
#include <QTest>
#include <array>

#include "support/waits.h"

namespace quarn {
namespace {

constexpr UINT kItemId = 16;

HWND HandleOf(QWidget& window) { return reinterpret_cast<HWND>(window.winId()); }

QString ItemText(HMENU menu, UINT item) {
  std::array<wchar_t, 100> text{};
  const int length = GetMenuStringW(menu, item, text.data(), static_cast<int>(text.size()), MF_BYCOMMAND);
  return QString::fromWCharArray(text.data(), length);
}

TEST(AboutItemWin32, StandsBelowALineInTheSystemMenuAndIsChosenThere) {
  int chosen = 0;
  QDialog dialog;
  AddWindowMenuItem(dialog, QStringLiteral("Quarnについて(&A)..."), [&chosen] { ++chosen; });
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, test::kLongestWaitMs));
  const HMENU menu = GetSystemMenu(HandleOf(dialog), FALSE);
  const int last = GetMenuItemCount(menu) - 1;
  ASSERT_GT(last, 1);
  EXPECT_EQ(ItemText(menu, kItemId), QStringLiteral("Quarnについて(&A)..."));
  EXPECT_EQ(GetMenuItemID(menu, last), kItemId);
  EXPECT_NE(GetMenuState(menu, static_cast<UINT>(last - 1), MF_BYPOSITION) & MF_SEPARATOR, 0U);

  PostMessageW(HandleOf(dialog), WM_SYSCOMMAND, kItemId, 0);
  EXPECT_TRUE(test::WaitUntil([&chosen] { return chosen > 0; }));
  // The lowest four bits are the system's own.
  PostMessageW(HandleOf(dialog), WM_SYSCOMMAND, kItemId + 2, 0);
  EXPECT_TRUE(test::WaitUntil([&chosen] { return chosen > 1; }));
  EXPECT_EQ(chosen, 2);
}

TEST(AboutItemWin32, OtherCommandsAndOtherWindowsAreNotItsOwn) {
  int chosen = 0;
  QDialog dialog;
  QDialog other;
  AddWindowMenuItem(dialog, QStringLiteral("About"), [&chosen] { ++chosen; });
  dialog.show();
  other.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&other, test::kLongestWaitMs));
  SendMessageW(HandleOf(other), WM_SYSCOMMAND, kItemId, 0);
  SendMessageW(HandleOf(dialog), WM_SYSCOMMAND, kItemId * 2, 0);
  SendMessageW(HandleOf(dialog), WM_COMMAND, kItemId, 0);
  QCoreApplication::processEvents();
  EXPECT_EQ(chosen, 0);
  SendMessageW(HandleOf(dialog), WM_SYSCOMMAND, SC_CLOSE, 0);
  EXPECT_TRUE(test::WaitUntil([&dialog] { return !dialog.isVisible(); }));
}

}  // namespace
}  // namespace quarn
