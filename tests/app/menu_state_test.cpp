#include "app/menu_state.h"

#include <gtest/gtest.h>

#include <array>

namespace quarn {
namespace {

TEST(MenuState, SaveAndCloseFileNeedAUserFile) {
  for (const int id : {57603, 32807}) {
    EXPECT_FALSE(IsCommandEnabled(id, {})) << id;
    EXPECT_TRUE(IsCommandEnabled(id, {.userFileInForce = true})) << id;
  }
}

TEST(MenuState, ResetAndDisconnectNeedAConnection) {
  for (const int id : {32789, 32801}) {
    EXPECT_FALSE(IsCommandEnabled(id, {.portConfigured = true})) << id;
    EXPECT_TRUE(IsCommandEnabled(id, {.connected = true, .portConfigured = true})) << id;
  }
}

TEST(MenuState, ConnectNeedsAPortThatIsNotConnected) {
  EXPECT_FALSE(IsCommandEnabled(32805, {}));
  EXPECT_TRUE(IsCommandEnabled(32805, {.portConfigured = true}));
  EXPECT_FALSE(IsCommandEnabled(32805, {.connected = true, .portConfigured = true}));
  EXPECT_FALSE(IsCommandEnabled(32805, {.connected = true}));
}

TEST(MenuState, WindowsAreOpenedOnce) {
  EXPECT_TRUE(IsCommandEnabled(32772, {}));
  EXPECT_FALSE(IsCommandEnabled(32772, {.terminalScreenOpen = true}));
  EXPECT_TRUE(IsCommandEnabled(32777, {}));
  EXPECT_FALSE(IsCommandEnabled(32777, {.functionKeyTableOpen = true}));
}

TEST(MenuState, EverythingElseIsAlwaysEnabled) {
  constexpr std::array kAlways{32793, 32795, 32799, 32771, 32791, 32792, 32783, 32775, 32779, 32790, 57667};
  const MenuFacts all{.userFileInForce = true,
                      .connected = true,
                      .portConfigured = true,
                      .terminalScreenOpen = true,
                      .functionKeyTableOpen = true};
  for (const int id : kAlways) {
    EXPECT_TRUE(IsCommandEnabled(id, {})) << id;
    EXPECT_TRUE(IsCommandEnabled(id, all)) << id;
  }
}

}  // namespace
}  // namespace quarn
