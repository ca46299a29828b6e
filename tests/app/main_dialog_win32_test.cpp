// Keys in the main dialog that Windows acts on before Qt hears of them.

#include <windows.h>

#include <array>

#include "app/main_dialog_fixture.h"
#include "support/waits.h"

namespace quarn::test {
namespace {

/// With Alt held.
class MainDialogSystemKeys : public MainDialog {
 protected:
  MainDialogSystemKeys() { HoldAlt(0x80); }
  ~MainDialogSystemKeys() override { HoldAlt(0); }
  HWND Handle() { return reinterpret_cast<HWND>(dialog.winId()); }
  void Post(WPARAM key) {
    constexpr LPARAM kAltIsDown = LPARAM{1} << 29;
    PostMessageW(Handle(), WM_SYSKEYDOWN, key, kAltIsDown | 1);
  }
  static void HoldAlt(BYTE state) {
    std::array<BYTE, 256> keys{};
    ASSERT_NE(GetKeyboardState(keys.data()), FALSE);
    keys[VK_MENU] = state;
    keys[VK_LMENU] = state;
    ASSERT_NE(SetKeyboardState(keys.data()), FALSE);
  }
  /// What was posted before has been handled.
  void LetItPass() {
    const UINT mark = RegisterWindowMessageW(L"quarn test mark");
    PostMessageW(Handle(), mark, 0, 0);
    EXPECT_TRUE(WaitUntil([&] {
      MSG message;
      return PeekMessageW(&message, Handle(), mark, mark, PM_NOREMOVE) == FALSE;
    }));
  }
};

TEST_F(MainDialogSystemKeys, GoToTheTerminalScreenWhileItIsOpen) {
  program.state.open.Add(Window::TerminalScreen);
  for (const WPARAM key : {WPARAM{VK_F4}, WPARAM{VK_SPACE}}) {
    program.state.requests.focus = false;
    Post(key);
    EXPECT_TRUE(WaitUntil([this] { return program.state.requests.focus; })) << key;
    LetItPass();
    EXPECT_TRUE(dialog.isVisible()) << key;
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    ASSERT_NE(GetGUIThreadInfo(GetCurrentThreadId(), &thread), FALSE);
    EXPECT_EQ(thread.flags & GUI_INMENUMODE, 0U) << key;
  }
}

TEST_F(MainDialogSystemKeys, CloseTheMainDialogWhileItIsClosed) {
  Post(VK_F4);
  EXPECT_TRUE(WaitUntil([this] { return !dialog.isVisible(); }));
  EXPECT_FALSE(program.state.requests.focus);
}

}  // namespace
}  // namespace quarn::test
