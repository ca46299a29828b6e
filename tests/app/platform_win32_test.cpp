#include "app/platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <QDialog>
#include <QTest>
#include <array>

#include "support/waits.h"

namespace quarn {
namespace {

// One test only, because the lock is kept until this process ends.
TEST(InstanceLockWin32, IsTheNameOfAMutex) {
  const HANDLE other = CreateEventW(nullptr, FALSE, FALSE, L"Quarn.exe");
  ASSERT_NE(other, nullptr);
  QString reason;
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Failed) << "something else has that name";
  EXPECT_TRUE(reason.startsWith(QStringLiteral("Quarn.exe: "))) << reason.toStdString();
  CloseHandle(other);
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::Taken);
  EXPECT_EQ(TakeInstanceLock(reason), InstanceLock::TakenByAnother);
  const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"Quarn.exe");
  EXPECT_NE(mutex, nullptr);
  EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "nobody owns it";
  ReleaseMutex(mutex);
  CloseHandle(mutex);
}

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
  AddWindowMenuItem(dialog, QStringLiteral("Quarnについて(&A)..."), QStringLiteral("Plain"),
                    [&chosen] { ++chosen; });
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
  // The lowest four bits belong to the system.
  PostMessageW(HandleOf(dialog), WM_SYSCOMMAND, kItemId + 2, 0);
  EXPECT_TRUE(test::WaitUntil([&chosen] { return chosen > 1; }));
  EXPECT_EQ(chosen, 2);
}

TEST(AboutItemWin32, OtherCommandsAndOtherWindowsAreNotItsOwn) {
  int chosen = 0;
  QDialog dialog;
  QDialog other;
  AddWindowMenuItem(dialog, QStringLiteral("About"), QStringLiteral("Plain"), [&chosen] { ++chosen; });
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
