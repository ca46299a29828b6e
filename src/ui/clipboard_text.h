#pragma once

#include <QClipboard>
#include <QString>
#include <optional>

namespace quarn {

class InputHold;

/// The time limit for the clipboard owner to provide a text.
inline constexpr int kClipboardMs = 1000;

/// The text on the clipboard, or the selected one (X11). Returns nullopt if there is none, or if its owner
/// does not provide it within `limitMs`. The owner is asked once. At most about a megabyte is read.
///
/// While waiting for an owner on an X11 display, windows paint and `hold` holds input; it must not be holding
/// already. On other systems the system waits. User-interface thread only.
std::optional<QString> ClipboardText(InputHold& hold, QClipboard::Mode mode = QClipboard::Clipboard,
                                     int limitMs = kClipboardMs);

/// Reads the text through Qt: at once from this program; from another program it blocks as long as the system
/// waits.
std::optional<QString> ClipboardTextFromQt(QClipboard::Mode mode);

}  // namespace quarn
