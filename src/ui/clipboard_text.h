#pragma once

#include <QClipboard>
#include <QString>
#include <optional>

namespace quarn {

class InputHold;

/// How long the program that owns the clipboard has to hand over a text.
inline constexpr int kClipboardMs = 1000;

/// The text on the clipboard, or the one that is selected (X11); nothing where there is none, and where its
/// owner does not hand it over within `limitMs`. It is asked once. No more than about a megabyte is taken.
///
/// While an owner on an X11 display is waited for, windows paint and input is held by `hold`, which must not
/// be holding already. Elsewhere the system does the waiting. User-interface thread only.
std::optional<QString> ClipboardText(InputHold& hold, QClipboard::Mode mode = QClipboard::Clipboard,
                                     int limitMs = kClipboardMs);

/// As Qt has it: at once from this program itself; from another one, as long as the system waits for it.
std::optional<QString> ClipboardTextFromQt(QClipboard::Mode mode);

}  // namespace quarn
