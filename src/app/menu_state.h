#pragma once

namespace quarn {

/// The numbers of the menu's commands.
namespace command {
inline constexpr int kOpen = 32793;
inline constexpr int kSave = 57603;
inline constexpr int kSaveAs = 32795;
inline constexpr int kCloseFile = 32807;
inline constexpr int kRestoreDefaults = 32799;
inline constexpr int kExit = 32771;
inline constexpr int kPortNumber = 32791;
inline constexpr int kDetailedPortList = 32792;
inline constexpr int kConnect = 32805;
inline constexpr int kDisconnect = 32801;
inline constexpr int kPortSettings = 32783;
inline constexpr int kReset = 32789;
inline constexpr int kTerminalScreen = 32772;
inline constexpr int kFunctionKeyTable = 32777;
inline constexpr int kCommandFormat = 32775;
inline constexpr int kScreenOption = 32779;
inline constexpr int kMainOption = 32790;
inline constexpr int kAbout = 57667;
}  // namespace command

/// The state that decides which menu items are enabled.
struct MenuFacts {
  bool userFileInForce = false;
  bool connected = false;
  bool portConfigured = false;
  bool terminalScreenOpen = false;
  bool functionKeyTableOpen = false;
};

/// Whether the command is enabled; a command that is not listed always is.
bool IsCommandEnabled(int commandId, const MenuFacts& facts);

}  // namespace quarn
