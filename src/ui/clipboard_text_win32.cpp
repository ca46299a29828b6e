#include "ui/clipboard_text.h"

namespace quarn {

// The system has the text, or fetches it from its owner within the one call that asks.
std::optional<QString> ClipboardText(InputHold& /*hold*/, QClipboard::Mode mode, int /*limitMs*/) {
  return ClipboardTextFromQt(mode);
}

}  // namespace quarn
