#include "ui/clipboard_text.h"

namespace quarn {

// The system has the text, or gets it from its owner within this one call.
std::optional<QString> ClipboardText(InputHold& /*hold*/, QClipboard::Mode mode, int /*limitMs*/) {
  return ClipboardTextFromQt(mode);
}

}  // namespace quarn
