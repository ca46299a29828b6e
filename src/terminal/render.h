#pragma once

#include <QByteArray>
#include <QString>
#include <array>

namespace quarn {

/// What stands in the log for the bytes 0x00 to 0x1F. "<ENG>" for 0x05 is the program's own spelling. The
/// entry for CR is for commands alone: in a response a CR ends a line.
extern const std::array<const char*, 32> kControlMnemonicTable;

/// A response as printable text: ASCII and CR stay, everything else is spelled out ("<STX>", "<DEL>",
/// "<0xa5>").
QByteArray RenderBytesForLog(const QByteArray& bytes);

/// The same for what has to stay on one line, such as a name in a message: a CR is spelled out, too.
QByteArray SpellOut(const QByteArray& bytes);

/// A command as the log echoes it, in the system's 8-bit encoding: what can be printed stays, everything else
/// is spelled out ("<CR>"), as is what that encoding lacks ("<U+20AC>").
QByteArray RenderCommandForLog(const QString& command);

/// Breaks text into lines of at most `width` characters by adding CRs. `width` must be positive.
QByteArray WrapLogText(const QByteArray& text, int width);

}  // namespace quarn
