#pragma once

#include <QByteArray>
#include <array>

namespace quarn {

/// What stands in the log for the bytes 0x00 to 0x1F. "<ENG>" for 0x05 is the program's own spelling. The
/// entry for CR is never used: a CR ends a line.
extern const std::array<const char*, 32> kControlMnemonicTable;

/// A response as printable text: ASCII and CR stay, everything else is spelled out ("<STX>", "<DEL>",
/// "<0xa5>").
QByteArray RenderBytesForLog(const QByteArray& bytes);

/// Breaks text into lines of at most `width` characters by adding CRs. `width` must be positive.
QByteArray WrapLogText(const QByteArray& text, int width);

}  // namespace quarn
