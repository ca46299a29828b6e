#pragma once

#include <QString>
#include <optional>

namespace quarn {

class InputHold;

/// How long the program that owns the clipboard has to hand over a text.
inline constexpr int kClipboardMs = 1000;

/// The text on the clipboard; nothing where there is none, and where its owner does not hand it over within
/// `limitMs`. It is asked once. Of a text that comes in pieces, as very long ones do, the first will do.
///
/// While an owner on an X11 display is waited for, windows paint and input is held by `hold`, which must not
/// be holding already. Elsewhere the system does the waiting. User-interface thread only.
std::optional<QString> ClipboardText(InputHold& hold, int limitMs = kClipboardMs);

/// As Qt has it: at once from this program itself; from another one, as long as the system waits for it.
std::optional<QString> ClipboardTextFromQt();

}  // namespace quarn
