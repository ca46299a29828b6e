#pragma once

#include <QString>

namespace quarn {

enum class TerminalStream { Output, Error };

/// Writes the text where whoever started the program sees it: on standard output, or on standard error. False
/// when that fails, and for standard output the reason is then told on standard error.
bool WriteOnTerminal(const QString& text, TerminalStream stream);

}  // namespace quarn
