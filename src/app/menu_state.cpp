#include "app/menu_state.h"

namespace quarn {

bool IsCommandEnabled(int commandId, const MenuFacts& facts) {
  switch (commandId) {
    case command::kSave:
    case command::kCloseFile:
      return facts.userFileInForce;
    case command::kReset:
    case command::kDisconnect:
      return facts.connected;
    case command::kConnect:
      return !facts.connected && facts.portConfigured;
    case command::kTerminalScreen:
      return !facts.terminalScreenOpen;
    case command::kFunctionKeyTable:
      return !facts.functionKeyTableOpen;
    default:
      return true;
  }
}

}  // namespace quarn
