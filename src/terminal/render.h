#pragma once

#include <QByteArray>
#include <QString>
#include <array>

namespace quarn {

/// The log's text for the bytes 0x00 to 0x1F. "<ENG>" for 0x05 is intended. The entry for CR is only for
/// commands: in a response a CR ends a line.
extern const std::array<const char*, 32> ControlMnemonicTable;

/// A response as printable text: ASCII and CR are kept, everything else is spelled out ("<STX>", "<DEL>",
/// "<0xa5>").
QByteArray RenderBytesForLog(const QByteArray& bytes);

/// The same for text that must stay on one line, such as a name in a message: a CR is spelled out too.
QByteArray SpellOut(const QByteArray& bytes);

/// A command as the log echoes it, in the system's 8-bit encoding: printable characters are kept, everything
/// else is spelled out ("<CR>"), also characters outside that encoding ("<U+20AC>").
QByteArray RenderCommandForLog(const QString& command);

/// Breaks text into lines of at most `width` characters by adding CRs. `width` must be positive.
QByteArray WrapLogText(const QByteArray& text, int width);

}  // namespace quarn
